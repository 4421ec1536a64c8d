#include <mdtools/filters.h>

#include <array>
#include <cstring>
#include <utility>

namespace Tools::Filters {

// Initialised by constants: a program's static objects may use them in their constructors.
constinit const char* const GirderGrillage = "GIRDER_GRILLAGE";
constinit const char* const Slab = "SLAB";
constinit const char* const Membrane = "MEMBRANE";
constinit const char* const Frame2D = "FRAME2D";
constinit const char* const Frame3D = "FRAME3D";
constinit const char* const System3D = "SYSTEM3D";

namespace Minors {

constinit const char* const Building3dName = "Building3d";

}

namespace {

constexpr Kind UnknownKind = static_cast<Kind>(-1);

struct Row {
    Kind kind;
    const char* text;
};

// In the order of the numbers, so that a known kind is its own index.
const std::array<Row, 6>& rows()
{
    static const std::array<Row, 6> table = {{{Kind::GirderGrillage, GirderGrillage},
                                              {Kind::Slab, Slab},
                                              {Kind::Membrane, Membrane},
                                              {Kind::Frame2D, Frame2D},
                                              {Kind::Frame3D, Frame3D},
                                              {Kind::System3D, System3D}}};
    return table;
}

bool isKnown(Kind kind)
{
    return kind >= Kind::GirderGrillage && kind <= Kind::System3D;
}

}

Kind toKind(const std::string& text)
{
    for (const Row& row : rows()) {
        if (std::strcmp(row.text, text.c_str()) == 0)
            return row.kind;
    }
    return UnknownKind;
}

mdt::Nullable<Kind> tryToKind(const std::string& text)
{
    const Kind kind = toKind(text);
    return kind == UnknownKind ? mdt::Nullable<Kind>() : mdt::Nullable<Kind>(kind);
}

std::string fromKind(Kind kind)
{
    return isKnown(kind) ? rows()[static_cast<std::size_t>(kind)].text : "";
}

bool isPlanarXy(Kind kind)
{
    return kind == Kind::GirderGrillage || kind == Kind::Slab;
}

bool isPlanarXz(Kind kind)
{
    return kind == Kind::Membrane || kind == Kind::Frame2D;
}

bool isSpatial(Kind kind)
{
    return kind == Kind::Frame3D || kind == Kind::System3D;
}

bool isRepresentable(Kind model, Kind program)
{
    if (!isKnown(model) || !isKnown(program))
        return false;
    // A spatial system holds every model, a spatial frame a plane one too.
    return model == program || program == Kind::System3D ||
           (model == Kind::Frame2D && program == Kind::Frame3D);
}

bool isRepresentable(const std::string& model, const std::string& program)
{
    return isRepresentable(toKind(model), toKind(program));
}

Minor::~Minor() = default;

std::unique_ptr<Minor> Minor::create(const std::string& name)
{
    if (name == Minors::Building3dName)
        return std::make_unique<Minors::Building3d>();
    return nullptr;
}

std::vector<std::string> Minor::listAllNames()
{
    return {Minors::Building3dName};
}

bool Minor::areEqual(const Minor* a, const Minor* b)
{
    if (a == nullptr || b == nullptr)
        return a == b;
    return *a == *b;
}

bool Minor::areEqual(const Minor* a, const Minor& b)
{
    return areEqual(a, &b);
}

namespace Minors {

Building3d::~Building3d() = default;

std::unique_ptr<Minor> Building3d::clone() const
{
    return std::make_unique<Building3d>(*this);
}

bool Building3d::operator==(const Minor& other) const
{
    return dynamic_cast<const Building3d*>(&other) != nullptr;
}

std::string Building3d::getName() const
{
    return Building3dName;
}

Kind Building3d::getMajorKind() const
{
    return Kind::System3D;
}

}

Pack::Pack(Kind kind) : m_kind(kind) {}

Pack::Pack(Kind kind, const Minor* minor)
    : m_kind(kind), m_minor(minor != nullptr ? minor->clone() : nullptr)
{}

Pack::Pack(Kind kind, std::unique_ptr<Minor> minor) : m_kind(kind), m_minor(std::move(minor)) {}

Pack::Pack(const Pack& other) : Pack(other.m_kind, other.m_minor.get()) {}

// Copied first, then moved: a clone that throws leaves this pack as it was.
Pack& Pack::operator=(const Pack& other)
{
    return *this = Pack(other);
}

Kind Pack::getKind() const
{
    return m_kind;
}

const Minor* Pack::getMinor() const
{
    return m_minor.get();
}

bool Pack::operator==(const Pack& other) const
{
    return m_kind == other.m_kind && Minor::areEqual(m_minor.get(), other.m_minor.get());
}

bool Pack::operator!=(const Pack& other) const
{
    return !(*this == other);
}

}

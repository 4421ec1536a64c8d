#pragma once

#include <mdtools/export.h>
#include <mdtools/nullable.h>

#include <memory>
#include <string>
#include <vector>

// The kinds of structural program in the family, and which kind of model can be shown in which kind
// of program. Everything here is free of state and may be called by any thread; an object
// belongs to one thread at a time.
namespace Tools::Filters {

// The numbers are fixed; -1 is an unknown kind.
enum class Kind : int {
    GirderGrillage = 0,
    Slab = 1,
    Membrane = 2,
    Frame2D = 3,
    Frame3D = 4,
    System3D = 5
};

// The kinds' texts as documents hold them: "GIRDER_GRILLAGE", "SLAB", "MEMBRANE", "FRAME2D",
// "FRAME3D", "SYSTEM3D".
MDTOOLS_API extern const char* const GirderGrillage;
MDTOOLS_API extern const char* const Slab;
MDTOOLS_API extern const char* const Membrane;
MDTOOLS_API extern const char* const Frame2D;
MDTOOLS_API extern const char* const Frame3D;
MDTOOLS_API extern const char* const System3D;

// The kind of a text, which must match exactly, letter case included; for any other text the kind
// with the number -1, or an empty result.
MDTOOLS_API Kind toKind(const std::string& text);
MDTOOLS_API mdt::Nullable<Kind> tryToKind(const std::string& text);

// The text of a kind; empty for a number that names none.
MDTOOLS_API std::string fromKind(Kind kind);

// Where the structure of a kind lies: in the x-y plane, in the x-z plane, or in space. An unknown
// kind lies nowhere.
MDTOOLS_API bool isPlanarXy(Kind kind);
MDTOOLS_API bool isPlanarXz(Kind kind);
MDTOOLS_API bool isSpatial(Kind kind);

// Whether a program of the one kind can take a model of the other. Every program takes the models
// of its own kind, a spatial-system program takes all, a spatial-frame program takes plane frames
// too. False where a kind or a text is unknown.
MDTOOLS_API bool isRepresentable(Kind model, Kind program);
MDTOOLS_API bool isRepresentable(const std::string& model, const std::string& program);

// A refinement of a kind. Compared by what it is, not by identity.
class MDTOOLS_API Minor {
public:
    virtual ~Minor();

    // A new copy.
    virtual std::unique_ptr<Minor> clone() const = 0;
    virtual bool operator==(const Minor& other) const = 0;
    virtual std::string getName() const = 0;
    // The kind that this refines.
    virtual Kind getMajorKind() const = 0;

    // The refinement of that name, or null if there is none.
    static std::unique_ptr<Minor> create(const std::string& name);
    static std::vector<std::string> listAllNames();

    // Null equals null and nothing else.
    static bool areEqual(const Minor* a, const Minor* b);
    static bool areEqual(const Minor* a, const Minor& b);

protected:
    Minor() = default;
    Minor(const Minor&) = default;
    Minor& operator=(const Minor&) = default;
};

namespace Minors {

// The name of Building3d, "Building3d".
MDTOOLS_API extern const char* const Building3dName;

// A building model, which belongs to the spatial systems.
class MDTOOLS_API Building3d : public Minor {
public:
    Building3d() = default;
    Building3d(const Building3d&) = default;
    Building3d& operator=(const Building3d&) = default;
    ~Building3d() override;

    std::unique_ptr<Minor> clone() const override;
    // True for every other Building3d.
    bool operator==(const Minor& other) const override;
    std::string getName() const override;
    Kind getMajorKind() const override;
};

}

// A kind with its refinement, if it has one. A value: copying clones the refinement, moving takes
// it over.
class MDTOOLS_API Pack {
public:
    explicit Pack(Kind kind);
    // Clones the refinement, which may be null.
    Pack(Kind kind, const Minor* minor);
    Pack(Kind kind, std::unique_ptr<Minor> minor);
    Pack(const Pack& other);
    Pack(Pack&& other) noexcept = default;
    Pack& operator=(const Pack& other);
    Pack& operator=(Pack&& other) noexcept = default;
    ~Pack() = default;

    Kind getKind() const;
    // Null if there is none; owned by the pack.
    const Minor* getMinor() const;

    bool operator==(const Pack& other) const;
    bool operator!=(const Pack& other) const;

private:
    Kind m_kind;
    std::unique_ptr<Minor> m_minor;
};

}

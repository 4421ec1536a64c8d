#include "tools/registration_import.h"

#include "tools/stored_keys.h"

#include <utility>
#include <vector>

namespace Tools::Registration {

namespace {

// True if the store is now as the change wants it; removing what is not there has succeeded.
bool apply(const Change& change, const KeyPath& path)
{
    if (change.kind == Change::Kind::RemoveKey)
        return removeKey(path) || !openKey(path, false).valid();
    if (change.kind == Change::Kind::RemoveValue) {
        RawValue old;
        const RegistryKey key = openKey(path, false);
        return Platform::removeValue(key.handle(), change.name) ||
               !Platform::readValue(key.handle(), change.name, old);
    }
    const RegistryKey key = openKey(path, true);
    return key.valid() && (change.kind == Change::Kind::CreateKey ||
                           Platform::writeValue(key.handle(), change.name, change.type,
                                                change.data.data(), change.data.size()));
}

// What brings back the store as it was: a change for each change, in reverse order.
class Undo {
public:
    // To be called before the change is made.
    void note(const Change& change, const KeyPath& path)
    {
        switch (change.kind) {
        case Change::Kind::CreateKey:
            noteMissingKeys(path);
            break;
        case Change::Kind::RemoveKey:
            noteTree(path);
            break;
        case Change::Kind::SetValue:
        case Change::Kind::RemoveValue:
            noteMissingKeys(path);
            noteValue(path, change.name);
            break;
        }
    }

    void takeBack()
    {
        for (; !m_steps.empty(); m_steps.pop_back())
            apply(m_steps.back().change, m_steps.back().path);
    }

private:
    struct Step {
        KeyPath path;
        Change change;
    };

    void add(const KeyPath& path, Change::Kind kind, const std::string& name = std::string(),
             const RawValue& value = RawValue())
    {
        Change change;
        change.kind = kind;
        change.name = name;
        change.type = value.kind;
        change.data = value.data;
        m_steps.push_back({path, std::move(change)});
    }

    // The highest key that is missing goes with all below it.
    void noteMissingKeys(const KeyPath& path)
    {
        if (openKey(path, false).valid())
            return;
        KeyPath upper{path.hive, {}};
        for (const std::string& name : path.names) {
            upper.names.push_back(name);
            if (openKey(upper, false).valid())
                continue;
            add(upper, Change::Kind::RemoveKey);
            return;
        }
    }

    void noteTree(const KeyPath& top)
    {
        if (!openKey(top, false).valid())
            return;
        visitTree(top, [this](const KeyPath& path, const RegistryKey& key) {
            add(path, Change::Kind::CreateKey);
            visitValues(key, [&](const std::string& name, const RawValue& value) {
                add(path, Change::Kind::SetValue, name, value);
            });
            return true;
        });
    }

    void noteValue(const KeyPath& path, const std::string& name)
    {
        const RegistryKey key = openKey(path, false);
        RawValue old;
        if (Platform::readValue(key.handle(), name, old))
            add(path, Change::Kind::SetValue, name, old);
        else if (key.valid())
            add(path, Change::Kind::RemoveValue, name);
    }

    std::vector<Step> m_steps;
};

}

bool importContent(const Content& content)
{
    Undo undo;
    Platform::ChangeBatch batch;
    for (const Change& change : content.changes) {
        const KeyPath& path = content.keys[change.key];
        undo.note(change, path);
        if (apply(change, path))
            continue;
        if (!batch.cancel())
            undo.takeBack();
        throw Fault(change.line, "cannot change " + path.text());
    }
    const bool isCommitted = batch.commit();
    // One hive may have taken its changes when another one refused.
    if (!isCommitted)
        undo.takeBack();
    return isCommitted;
}

}

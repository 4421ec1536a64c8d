#pragma once

#include <mdtools/export.h>
#include <mdtools/platform_types.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

// The settings store of the system: on Windows its registry, elsewhere a database for the user and
// two for the machine with the same keys, paths and value types.
//
// Nothing here reports an error or throws for one. What could not be opened is an invalid key, what
// could not be read an invalid value; ask valid(). A write or removal that failed leaves everything
// as it was, and nothing says so but reading the value again. On Linux a write waits up to five
// seconds for another program that is writing just then, and is given up with a line on the debug
// channel if that one does not end, because somebody stopped it for instance; reads wait for no
// writer. What was written survives the death of the program. Different objects may be used from
// different threads at once, also when they mean the same key; one object belongs to one thread at
// a time.
//
// Paths separate keys by "/" or "\\" alike and ignore letter case. One leading separator is
// dropped; a second one makes the path one that names nothing. A path of more than 4,096 characters
// or with a name of more than 255 names nothing either. Value names ignore case, too, and have up
// to 16,383 characters; the empty name is a key's default value. New names keep the case of their
// creation. All texts end at their first NUL.
namespace Tools {

class RegistryKey;
class RegistryValue;

// The way into the store.
class MDTOOLS_API Registry {
public:
    // The roots, with fixed numbers. With any other number nothing can be opened.
    enum Hive : int { LocalMachine = 0, CurrentUser = 1, ClassesRoot = 2 };

    // Opens the key at `path` below the root for reading; an empty path (or null) is the root
    // itself. With `create` the key and all missing ones above it are made first.
    static RegistryKey find(Hive hive, const std::string& path, bool create);
    static RegistryKey find(Hive hive, const char* path, bool create);
};

// One open key. Owns its handle: copying opens the key once more, for reading, and destruction
// closes it. A key that was deleted meanwhile stays valid() but can neither be read nor written.
class MDTOOLS_API RegistryKey {
public:
    class Iterator;

    RegistryKey() = default;
    // Takes the handle over as it is. On Windows any HKEY will do.
    explicit RegistryKey(KeyHandle handle);
    // Opens or creates `path` below another key, by the rules of Registry::find.
    RegistryKey(KeyHandle parent, const std::string& path, bool create);
    RegistryKey(const RegistryKey& parent, const std::string& path, bool create);
    RegistryKey(const RegistryKey& other);
    RegistryKey(RegistryKey&& other) noexcept;
    RegistryKey& operator=(const RegistryKey& other);
    RegistryKey& operator=(RegistryKey&& other) noexcept;
    ~RegistryKey();

    // Remains owned by this object; null when invalid.
    KeyHandle handle() const { return m_handle; }
    bool valid() const { return m_handle != nullptr; }

    // The value as it is now; invalid if there is none of that name.
    RegistryValue operator[](const std::string& name) const;

    // Stores a value under its own name, in one step, replacing one of that name: whoever reads
    // meanwhile finds the old or the new one. An invalid value (type None) removes the stored one,
    // which is how a setting is cleared. Both open the key once more, for writing, so they work on
    // copies and on keys opened for reading.
    RegistryKey& add(const RegistryValue& value);
    // Removes the value of that name; type and data play no part.
    RegistryKey& remove(const RegistryValue& value);

private:
    KeyHandle m_handle = nullptr;
};

// A value of a key: name, type and data, detached from the key. Reading and changing it touches no
// store; RegistryKey::add() stores it. Invalid while its type is None.
class MDTOOLS_API RegistryValue {
public:
    // The numbers are this library's own, not the system's. Stored values of any other type read as
    // None. ExpandString is read and written as it is, nothing in it is expanded.
    enum Type : int {
        None = 0,
        String = 1,
        MultiString = 2,
        ExpandString = 3,
        Binary = 4,
        DWord = 5
    };
    class Iterator;

    RegistryValue() = default;
    // Reads the value now; invalid, but with that name, if it cannot be read.
    RegistryValue(KeyHandle key, const std::string& name);
    RegistryValue(const RegistryValue& other) = default;
    RegistryValue(RegistryValue&& other) = default;
    RegistryValue& operator=(const RegistryValue& other) = default;
    RegistryValue& operator=(RegistryValue&& other) = default;
    virtual ~RegistryValue();

    std::string name() const { return m_name; }
    Type type() const { return m_type; }
    bool valid() const { return m_type != None; }
    // Of the data in bytes: of a text its length plus 1, of a DWord 4, without a type 0.
    std::size_t size() const;

    RegistryValue& setName(const std::string& name);
    // Clears all data, also when the type stays the same; so set the type first.
    RegistryValue& setType(Type type);

    // Sets the data as the type has it; the type itself never changes. Without a type only a word
    // is kept.
    //
    // A text: a MultiString becomes a list of this one text (empty data for an empty text), Binary
    // its bytes without a terminator, a DWord the decimal number that it begins with (0 if none;
    // "-1" wraps around, a number that is too large becomes the largest).
    RegistryValue& setData(const std::string& text);
    // A list of texts. A MultiString and Binary take the packed list: each text with its NUL, and a
    // closing NUL; String and ExpandString take the first text; a DWord stays as it is.
    RegistryValue& setData(const std::vector<std::string>& list);
    RegistryValue& setData(std::initializer_list<std::string> list);
    // A word, kept whatever the type is.
    RegistryValue& setData(std::uint32_t word);
    RegistryValue& setData(int word);
    RegistryValue& setData(unsigned long word);
    // Characters or bytes. String and ExpandString take them up to the first NUL (bytes at most
    // `size`, characters without regard to it), MultiString and Binary all of them. A DWord takes
    // up to 4 of the bytes, in the order of memory, and nothing from characters. A null pointer
    // means no characters or bytes at all.
    RegistryValue& setData(const char* characters, std::size_t size);
    RegistryValue& setData(const unsigned char* bytes, std::size_t size);
    // Texts up to a null pointer, as of a command line. String and ExpandString take the first,
    // MultiString all, a DWord the number that the first one begins with; Binary stays as it is. A
    // null array changes nothing.
    RegistryValue& setData(const char* const* texts);

    // The text; of a MultiString its first text; empty for other types.
    std::string getString() const;
    // The texts of a MultiString up to the first empty one; of another text just that one.
    std::vector<std::string> getMultiString() const;
    // Of a MultiString the text at the index, empty after the last; else as getString().
    std::string getMultiStringAt(std::size_t index) const;
    // The word, whatever the type is.
    std::uint32_t getDWord() const { return m_word; }

    // The data of the type, size() bytes; null without a type. Stays where it is until the value is
    // changed, moved or destroyed.
    unsigned char* getBytes();
    const unsigned char* getBytes() const;
    char* getChars();
    const char* getChars() const;
    // Copies as much of the data as `capacity` holds, of a text with its NUL, and returns
    // `destination`. Null is left alone.
    unsigned char* getBinary(unsigned char* destination, std::size_t capacity) const;

private:
    class Reader;

    bool holdsText() const { return m_type == String || m_type == ExpandString; }

    std::string m_name;
    Type m_type = None;
    // What the type holds: the text, the packed list, or the bytes.
    std::string m_data;
    std::uint32_t m_word = 0;
};

// Walks the subkeys of a key by index:
//     for (it.begin(); it.valid(); ++it) use(*it);
// The index counts the subkeys as they are at each call, so one that is created or removed
// meanwhile shifts the others. On Linux they come ordered by name without case. Keys come by value,
// opened for reading, and are invalid where the index names none.
class MDTOOLS_API RegistryKey::Iterator {
public:
    // Without a key nothing is ever valid.
    Iterator() = default;
    // Opens the key once more.
    explicit Iterator(const RegistryKey& key);
    Iterator(const Iterator& other) = default;
    Iterator(Iterator&& other) = default;
    Iterator& operator=(const Iterator& other) = default;
    Iterator& operator=(Iterator&& other) = default;
    virtual ~Iterator();

    RegistryKey begin();
    // Goes to the last subkey, not beyond it.
    RegistryKey end();
    bool valid() const;

    // The subkey at an index, without moving there. None while its own index is negative, as after
    // begin() on a key without subkeys.
    RegistryKey operator[](int index) const;
    RegistryKey operator*() const;
    // The forms with the operator in front yield the new subkey, the others the old one.
    RegistryKey operator++();
    RegistryKey operator++(int);
    RegistryKey operator--();
    RegistryKey operator--(int);

private:
    RegistryKey m_key;
    int m_index = 0;
};

// Walks the values of a key in the same way. A value whose name has more than 4,095 characters
// comes out invalid.
class MDTOOLS_API RegistryValue::Iterator {
public:
    Iterator() = default;
    explicit Iterator(const RegistryKey& key);
    Iterator(const Iterator& other) = default;
    Iterator(Iterator&& other) = default;
    Iterator& operator=(const Iterator& other) = default;
    Iterator& operator=(Iterator&& other) = default;
    virtual ~Iterator();

    RegistryValue begin();
    // Goes to the last value, not beyond it.
    RegistryValue end();
    bool valid() const;

    RegistryValue operator[](int index) const;
    RegistryValue operator*() const;
    RegistryValue operator++();
    RegistryValue operator++(int);
    RegistryValue operator--();
    RegistryValue operator--(int);

private:
    RegistryKey m_key;
    int m_index = 0;
};

}

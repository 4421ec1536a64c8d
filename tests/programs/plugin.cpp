// A library for tests that load one by name.

#include <cstring>

extern "C" int answer()
{
    return 42;
}

extern "C" int countCharacters(int count, char** arguments)
{
    int characters = 0;
    for (int i = 0; i < count; ++i)
        characters += static_cast<int>(std::strlen(arguments[i]));
    return characters;
}

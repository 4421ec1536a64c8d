// Loads and frees a plug-in that uses settings, again and again:
//     settings_host MODULE LIBRARY PATH
// Ends with 0 if the plug-in worked each time and nothing stayed behind, neither the library nor an
// open file.
#include <filesystem>
#include <iterator>

#include <dlfcn.h>

int main(int argc, char** argv)
{
    namespace fs = std::filesystem;
    const auto countOpenFiles = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    if (argc != 4)
        return 2;
    const auto before = countOpenFiles();
    for (int i = 0; i < 5; ++i) {
        void* module = ::dlopen(argv[1], RTLD_NOW);
        if (module == nullptr)
            return 3;
        const auto use = reinterpret_cast<bool (*)(const char*)>(::dlsym(module, "useSettings"));
        if (use == nullptr || !use(argv[3]))
            return 4;
        ::dlclose(module);
        if (::dlopen(argv[2], RTLD_NOW | RTLD_NOLOAD) != nullptr)
            return 5;
    }
    return countOpenFiles() == before ? 0 : 6;
}

// The other process of the files' tests:
//     file_child MODE PATH READY    opens PATH, makes the file READY and keeps PATH open until
//     killed
#include <mdtools/file.h>

#include <chrono>
#include <thread>

int main(int argc, char** argv)
{
    if (argc != 4 || Tools::File::open(argv[2], argv[1]) == nullptr)
        return 1;
    Tools::File::close(Tools::File::open(argv[3], "w"));
    std::this_thread::sleep_for(std::chrono::minutes(5));
    return 0;
}

#pragma once

#include <mdtools/command.h>

#include <vector>

namespace Tools {

// While one of these lives, a command may be running on this thread, and commands that are
// destroyed are kept until the last of them ends.
class CommandRun {
public:
    CommandRun();
    ~CommandRun();
    CommandRun(const CommandRun&) = delete;
    CommandRun& operator=(const CommandRun&) = delete;

    // Deletes the commands, now or when nothing runs any more. Groups in groups are taken apart one
    // by one, whatever their depth.
    static void destroy(std::vector<Command*> commands);

private:
    static void destroyNow(std::vector<Command*>& commands);
};

}

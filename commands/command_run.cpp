#include "commands/command_run.h"

#include <mdtools/command_list.h>

#include <memory>

namespace Tools {

namespace {

// A plain pointer, so that the end of a thread has nothing to run in the library.
thread_local int runs = 0;
thread_local std::vector<Command*>* kept = nullptr;

}

CommandRun::CommandRun()
{
    ++runs;
}

CommandRun::~CommandRun()
{
    if (--runs != 0)
        return;
    // Their ends may run commands, which keep others.
    while (kept != nullptr) {
        const std::unique_ptr<std::vector<Command*>> commands(kept);
        kept = nullptr;
        destroyNow(*commands);
    }
}

void CommandRun::destroy(std::vector<Command*> commands)
{
    if (commands.empty())
        return;
    if (runs == 0) {
        destroyNow(commands);
        return;
    }
    if (kept == nullptr)
        kept = new std::vector<Command*>;
    kept->insert(kept->end(), commands.begin(), commands.end());
}

void CommandRun::destroyNow(std::vector<Command*>& commands)
{
    while (!commands.empty()) {
        Command* const command = commands.back();
        commands.pop_back();
        if (command != nullptr && command->m_mayBeGroup) {
            if (const auto* group = dynamic_cast<GroupCommand*>(command)) {
                const std::vector<Command*> inner = group->m_commands->release();
                commands.insert(commands.end(), inner.begin(), inner.end());
            }
        }
        delete command;
    }
}

}

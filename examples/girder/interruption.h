#pragma once

#include <mdtools/progress.h>

namespace Girder {

// While it lives, Ctrl-C does not end the program but cancels what asks this handler, on any
// thread. One at a time.
class Interruption : public Tools::CancelHandler {
public:
    Interruption();
    ~Interruption() override;
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    bool isCancelled() override;

private:
    void (*m_previous)(int);
};

}

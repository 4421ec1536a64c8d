#pragma once

#include <mdtools/export.h>

namespace Tools {

// The base of views that can be brought up to date. A view belongs to one thread, that of its
// window; nothing here is locked.
class MDTOOLS_API Displayer {
public:
    virtual ~Displayer();

    // Nothing by default.
    virtual void refresh();

protected:
    Displayer() = default;
    Displayer(const Displayer&) = default;
    Displayer& operator=(const Displayer&) = default;
};

}

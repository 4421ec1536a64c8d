#pragma once

#include <mdtools/export.h>

namespace Tools {

// The base of views that can be brought up to date.
class MDTOOLS_API Displayer {
public:
    virtual ~Displayer();

    // Nothing by default.
    virtual void refresh();

protected:
    Displayer();
    Displayer(const Displayer&);
    Displayer& operator=(const Displayer&);
};

}

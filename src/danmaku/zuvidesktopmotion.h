#pragma once

// Whether the desktop asks applications to keep motion to a minimum. Read
// through Qt's accessibility hints where this Qt offers them; a Qt that
// cannot tell reports no preference, and the viewer's own switch decides.
class ZuviDesktopMotion
{
public:
    static bool prefersReducedMotion();
};

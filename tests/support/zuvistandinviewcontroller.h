#pragma once

#include "app/zuviviewcontroller.h"

// A plain screen for the suites that need something under a stack or on a
// tab beside the screen they test: it has a title and nothing else.
class ZuviStandInViewController : public ZuviViewController
{
public:
    using ZuviViewController::ZuviViewController;
    QUrl pageUrl() const override { return {}; }
};

#pragma once

// The debug log is a platform facility (the service client and the image
// loader write to it, and they sit below the app). Screens that still name
// it by its old place keep compiling through this header.
#include "platform/zuvidebuglog.h"

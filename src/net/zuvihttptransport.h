#pragma once

// The HTTP transport is a platform facility shared by the service client,
// the remote configuration and the image loader. Code that still names it
// by its old place keeps compiling through this header.
#include "platform/zuvihttptransport.h"

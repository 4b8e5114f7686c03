#pragma once

// Requests and responses belong to the transport, a platform facility. Code
// that still names them by their old place keeps compiling through this
// header.
#include "platform/zuviurlrequest.h"

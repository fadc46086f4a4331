#pragma once

// The HTTP library is one large header, set up here for all who need it.

/// A line of a request's head, which browsers fill with what they know of all servers of a host.
#define CPPHTTPLIB_HEADER_MAX_LENGTH 16384
#define CPPHTTPLIB_LISTEN_BACKLOG 200

#include <httplib.h>

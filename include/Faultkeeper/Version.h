#ifndef FAULTKEEPER_VERSION_H
#define FAULTKEEPER_VERSION_H

/// The version of these headers. The build takes the library's own version from this file.
#define FAULTKEEPER_VERSION_MAJOR 1
#define FAULTKEEPER_VERSION_MINOR 0
#define FAULTKEEPER_VERSION_PATCH 0
#define FAULTKEEPER_VERSION "1.0.0"

#endif

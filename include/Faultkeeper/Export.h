#ifndef FAULTKEEPER_EXPORT_H
#define FAULTKEEPER_EXPORT_H

/// Marks what libFaultkeeperAPI.so shows to its users. Everything else is compiled with hidden visibility.
#define FAULTKEEPER_EXPORT __attribute__((visibility("default")))

#endif

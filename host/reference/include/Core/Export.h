#ifndef CORE_EXPORT_H
#define CORE_EXPORT_H

/// Marks what libFaultkeeperHost.so shows to its users. Everything else is compiled with hidden visibility.
#define CORE_EXPORT __attribute__((visibility("default")))

/// Hides a class within one that is shown.
#define CORE_LOCAL __attribute__((visibility("hidden")))

#endif

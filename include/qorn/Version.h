#ifndef QORN_VERSION_H
#define QORN_VERSION_H

// The one place that holds the version; the build reads it from here.
#define QORN_VERSION_MAJOR 0
#define QORN_VERSION_MINOR 1
#define QORN_VERSION_PATCH 0
#define QORN_VERSION_STRING "0.1.0"

#endif

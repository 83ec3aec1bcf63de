#ifndef QORN_EXPORT_H
#define QORN_EXPORT_H

/// Marks what the shared library exports; everything else stays hidden.
#if defined(__GNUC__)
#define QORN_API __attribute__((visibility("default")))
#else
#define QORN_API
#endif

#endif

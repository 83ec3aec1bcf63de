// Turns the rows of a family's .inc file into this level's functions. Include it in the level's namespace
// after the implementations, with QORN_FAMILY naming the .inc file.
#define QORN_KERNEL(cls, name, params, args, ...)                                                            \
  void name params { __VA_ARGS__ args; }
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...)                                      \
  result name params { return __VA_ARGS__ args; }
#define QORN_KERNEL_STREAMED(cls, name, params, args, ...) QORN_KERNEL(cls, name, params, args, __VA_ARGS__)
#include QORN_FAMILY
#undef QORN_KERNEL
#undef QORN_KERNEL_STREAMED
#undef QORN_KERNEL_OWN_FORWARDER
#undef QORN_FAMILY

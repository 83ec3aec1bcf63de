#include "qorn/infra/QORNMalloc.h"

#include <cstddef>
#include <cstdio>
#include <new>

namespace QORN {

namespace {

constexpr std::align_val_t kBlockAlignment{QORNMalloc::kAlignment};

// The limit is on the count and not on the bytes; read as unsigned, a negative count is above it.
template <class T> T *Block(int count) {
  if (static_cast<unsigned>(count) > static_cast<unsigned>(QORNMalloc::kMaxCount)) return nullptr;
  const std::size_t bytes = sizeof(T) * static_cast<std::size_t>(count);
  return static_cast<T *>(::operator new(bytes, kBlockAlignment, std::nothrow));
}

} // namespace

unsigned char *QORNMalloc::MallocBit(int count) { return Block<unsigned char>(count); }
unsigned char *QORNMalloc::MallocUInt8(int count) { return Block<unsigned char>(count); }
char *QORNMalloc::MallocByte(int count) { return Block<char>(count); }
short *QORNMalloc::MallocInt16(int count) { return Block<short>(count); }
int *QORNMalloc::MallocInt32(int count) { return Block<int>(count); }
float *QORNMalloc::MallocReal32(int count) { return Block<float>(count); }
double *QORNMalloc::MallocReal64(int count) { return Block<double>(count); }
Cplx32 *QORNMalloc::MallocCplx32(int count) { return Block<Cplx32>(count); }
Cplx64 *QORNMalloc::MallocCplx64(int count) { return Block<Cplx64>(count); }

void QORNMalloc::Delete(void *block) { ::operator delete(block, kBlockAlignment); }

void QORNMalloc::MallocErrorDump(int items, int bytesEach, const char *text) {
  std::printf("QORNMalloc: System tried to allocate %i items x %d bytes each = %.0lf bytes\n", items,
              bytesEach, static_cast<double>(items) * static_cast<double>(bytesEach));
  if (text != nullptr) std::printf("%s \n", text);
}

} // namespace QORN

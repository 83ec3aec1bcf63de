#include "qorn/infra/VectorStorage.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "BinaryFile.h"
#include "Errors.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

constexpr char kModule[] = "infra\\VectorStorage";

static_assert(std::endian::native == std::endian::little, "files are written and read as memory has them");

struct Header {
  char description[64];
  std::int32_t tag;
  std::int32_t version;
  std::int32_t type;
  std::int32_t length;
  float params[3];
  unsigned char reserved[16];
};
static_assert(sizeof(Header) == 108 && offsetof(Header, params) == 80);

constexpr std::int32_t kTag = 26;
constexpr std::int32_t kVersion = 1;

template <class V> struct FileTraits;
template <> struct FileTraits<VecCplx64> {
  static constexpr int kType = 100;
  static constexpr char kName[] = "VecCplx64";
};
template <> struct FileTraits<VecReal64> {
  static constexpr int kType = 101;
  static constexpr char kName[] = "VecReal64";
};
template <> struct FileTraits<VecCplx32> {
  static constexpr int kType = 102;
  static constexpr char kName[] = "VecCplx32";
};
template <> struct FileTraits<VecReal32> {
  static constexpr int kType = 103;
  static constexpr char kName[] = "VecReal32";
};

struct Params {
  float values[3];
};

// The bytes of n elements, none for a negative n.
template <class T> std::size_t BytesOf(int n) { return n > 0 ? sizeof(T) * static_cast<std::size_t>(n) : 0; }

// Writes the header, if there is one, and the data.
template <class T> void WriteFile(const char *path, const Header *header, const T *data, int length) {
  BinaryFile file(path, BinaryFile::Mode::kReplace, kModule);
  const bool done =
      (header == nullptr || file.Write(header, sizeof *header)) && file.Write(data, BytesOf<T>(length));
  if (!file.Close() || !done) Throw(errors::kFileWrite, kModule);
}

template <class V> void WriteWithHeader(const char *path, const V &vector, const Params &params) {
  Header header{};
  std::snprintf(header.description, sizeof header.description, "%s, length=%d", FileTraits<V>::kName,
                vector.GetSize());
  header.tag = kTag;
  header.version = kVersion;
  header.type = FileTraits<V>::kType;
  header.length = vector.GetSize();
  for (int i = 0; i < 3; ++i) header.params[i] = params.values[i];
  WriteFile(path, &header, vector.GetPtr(), vector.GetSize());
}

Header ReadHeader(const BinaryFile &file) {
  Header header;
  if (file.Read(&header, sizeof header) != sizeof header) Throw(errors::kFileRead, kModule);
  return header;
}

template <class V> void CheckHeader(const Header &header) {
  if (header.version != kVersion) Throw(errors::kFileVersion, kModule);
  if (header.type != FileTraits<V>::kType) Throw(errors::kFileType, kModule);
  if (header.length < 0) Throw(errors::kFileRead, kModule);
}

} // namespace

template <class V, class T> void VectorStorage<V, T>::ReadElements(const BinaryFile &file, int count) {
  // What is read need not be cleared before.
  if (count > this->m_capacity) {
    this->CreateUncleared(count);
  } else {
    this->Resize(count);
  }
  const std::size_t bytes = BytesOf<T>(count);
  if (file.Read(this->m_pData, bytes) == bytes) return;
  this->Resize(0);
  Throw(errors::kFileRead, kModule);
}

template <class V, class T> void VectorStorage<V, T>::Store(const char *path) const {
  WriteWithHeader(path, static_cast<const V &>(*this), {});
}

template <class V, class T> void VectorStorage<V, T>::StoreNoHeader(const char *path) const {
  WriteFile<T>(path, nullptr, this->m_pData, this->m_length);
}

template <class V, class T> void VectorStorage<V, T>::Load(const char *path) {
  this->Resize(0);
  const BinaryFile file(path, BinaryFile::Mode::kRead, kModule);
  const Header header = ReadHeader(file);
  CheckHeader<V>(header);
  ReadElements(file, header.length);
}

void VecCplx32::Store(const char *path, float param0, float param1, float param2) const {
  WriteWithHeader(path, *this, {{param0, param1, param2}});
}

void VecCplx32::Load(const char *path, int &length, float &param0, float &param1, float &param2) {
  const BinaryFile file(path, BinaryFile::Mode::kRead, kModule);
  const Header header = ReadHeader(file);
  param0 = header.params[0];
  param1 = header.params[1];
  param2 = header.params[2];
  CheckHeader<VecCplx32>(header);
  length = header.length;
}

void VecCplx32::Load(const char *path, int first, int count) {
  Resize(0);
  const BinaryFile file(path, BinaryFile::Mode::kRead, kModule);
  const Header header = ReadHeader(file);
  CheckHeader<VecCplx32>(header);
  if (std::int64_t{first} + count > header.length) Throw(errors::kFileRead, kModule);
  if (!file.Skip(std::int64_t{first} * static_cast<std::int64_t>(sizeof(Cplx32)))) {
    Throw(errors::kFileRead, kModule);
  }
  ReadElements(file, count);
}

template class VectorStorage<VecReal32, float>;
template class VectorStorage<VecReal64, double>;
template class VectorStorage<VecCplx32, Cplx32>;
template class VectorStorage<VecCplx64, Cplx64>;

} // namespace QORN

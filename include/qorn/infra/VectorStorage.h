#ifndef QORN_INFRA_VECTORSTORAGE_H
#define QORN_INFRA_VECTORSTORAGE_H

#include "qorn/Export.h"
#include "qorn/infra/VectorOps.h"

namespace QORN {

class BinaryFile;

/// Vector files, which VecReal32, VecReal64, VecCplx32 and VecCplx64 share: V is the vector class, T its
/// element type. It adds neither a field nor a virtual operation to VectorOps.
///
/// A vector file is a header of 108 bytes and the elements of the view as they lie in memory. All numbers are
/// little-endian:
///
/// | offset | size | field | value |
/// |---|---|---|---|
/// | 0 | 64 | description | the class, ", length=" and the length, then zero bytes |
/// | 64 | 4 | tag, int | 26 |
/// | 68 | 4 | version, int | 1 |
/// | 72 | 4 | type, int | VecCplx64 100, VecReal64 101, VecCplx32 102, VecReal32 103 |
/// | 76 | 4 | length, int | the number of elements |
/// | 80 | 12 | three parameters, float | 0, or what VecCplx32::Store was given |
/// | 92 | 16 | reserved | zero |
/// | 108 | | data | the elements: IEEE numbers, the real part of a complex one first |
///
/// Header and data are written and read with one call each, straight from and to the vector's block. Nothing
/// is allocated but what the vector needs to grow. Each call opens a file and closes it before it returns or
/// throws. What goes wrong leaves as QORNException, with the path literal "infra\VectorStorage":
///
/// | code | message | when |
/// |---|---|---|
/// | 13001 | "error opening file" | the file cannot be opened, or is a folder |
/// | 13002 | "error reading file" | it ends too early, cannot be read, or tells a negative length |
/// | 13003 | "error writing file" | it cannot take what is written, a full disk included |
/// | 13004 | "file version error" | the version is not 1 |
/// | 13005 | "file type error" | the file holds another class's elements |
template <class V, class T> class QORN_API VectorStorage : public VectorOps<V, T> {
public:
  /// Writes the view to a vector file, in place of what path names. A file that cannot be written to its end
  /// stays as far as it came.
  void Store(const char *path) const;

  /// Writes the elements of the view alone, without a header.
  void StoreNoHeader(const char *path) const;

  /// Reads a vector file that the same class stored; what follows the data is ignored. If anything fails the
  /// vector is empty and keeps its capacity.
  ///
  /// The length in the header is believed before there is a look at the data: one that memory cannot hold
  /// leaves as 11001, as from Resize. Memory that the file has no data for is never touched, though, so that
  /// a small file with a great length does no harm.
  void Load(const char *path);

protected:
  VectorStorage() = default;
  using VectorOps<V, T>::VectorOps;

  /// Resizes to count and reads as many elements from where the file stands.
  void ReadElements(const BinaryFile &file, int count);
};

} // namespace QORN

#endif

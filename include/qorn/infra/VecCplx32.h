#ifndef QORN_INFRA_VECCPLX32_H
#define QORN_INFRA_VECCPLX32_H

#include "qorn/Export.h"
#include "qorn/infra/CplxVectorOps.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class VecCplx64;

/// A vector of IQ samples in float. Storage and view: BaseVector; copies and filling: VectorOps; files:
/// VectorStorage; arithmetic, statistics, import and export: CplxVectorOps. This class adds what has no
/// counterpart in VecCplx64 or differs from it.
class QORN_API VecCplx32 : public CplxVectorOps<VecCplx32, Cplx32, float, VecReal32> {
public:
  /// An empty vector.
  VecCplx32() = default;

  /// n elements, all (0, 0). Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecCplx32(int n) : CplxVectorOps(n) {}

  /// A vector of the source's length, both parts of each value rounded to float.
  VecCplx32(const VecCplx64 &src);

  /// Element i = (re[i], 0).
  VecCplx32(const VecReal32 &re);

  /// Element i = (re[i], im[i]), of the length of re; that of im is not looked at.
  VecCplx32(const VecReal32 &re, const VecReal32 &im);

  /// Resizes to the source's length and rounds both parts of each value to float.
  ///@{
  VecCplx32 &operator=(const VecCplx64 &src);
  void Import(const VecCplx64 &src);
  ///@}

  using CplxVectorOps::Sub;

  /// this[thisFirst + i] = this[thisFirst + i] - arg[argFirst + i] for 0 <= i < count, or to the end of arg
  /// if count is -1. arg may be this vector if the two ranges are the same or apart.
  void Sub(const VecCplx32 &arg, int thisFirst, int argFirst, int count);

  using CplxVectorOps::Import;

  /// this[i] = (re[i], im[i]), each rounded to float, for 0 <= i < n, resized to n.
  void Import(const double *re, const double *im, int n);

  using CplxVectorOps::Export;

  /// (re[i], im[i]) = this[i], widened, for 0 <= i < n, whatever the length.
  void Export(double *re, double *im, int n) const;

  using CplxVectorOps::Store;

  /// Writes a vector file that also holds three parameters. They belong to the caller, the format gives them
  /// no meaning.
  void Store(const char *path, float param0, float param1, float param2) const;

  using CplxVectorOps::Load;

  /// Reads the header of a vector file and leaves this vector as it is: length is the number of elements in
  /// the file. A header of another version or class throws 13004 or 13005 after the three parameters are
  /// written; length then stays as it was.
  void Load(const char *path, int &length, float &param0, float &param1, float &param2);

  /// Reads count elements of a vector file from element first on. Throws 13002 if first + count is above the
  /// number of elements in the file. A negative first goes back into the header, whose bytes then are read as
  /// elements; before the start of the file there is nothing to read, 13002. A negative count becomes the
  /// length as it stands, as with Resize. If anything fails the vector is empty and keeps its capacity.
  void Load(const char *path, int first, int count);
};

extern template class VectorOps<VecCplx32, Cplx32>;
extern template class VectorStorage<VecCplx32, Cplx32>;
extern template class CplxVectorOps<VecCplx32, Cplx32, float, VecReal32>;

} // namespace QORN

#endif

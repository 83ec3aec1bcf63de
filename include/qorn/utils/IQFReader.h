#ifndef QORN_UTILS_IQFREADER_H
#define QORN_UTILS_IQFREADER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

class VecCplx32;
class VecCplx64;
class VecReal32;
class VecReal64;

/// The 24 bytes in front of each frame's payload, handed through as they stand in the file.
struct FrameHeader {
  std::uint16_t reserved0;     ///< not interpreted
  std::uint16_t polarMark1;    ///< 0xFFFF together with polarMark2: the frame holds phase and amplitude
  std::uint16_t polarMark2;    ///< see polarMark1
  std::uint16_t cartMark1;     ///< 0xFFFF together with cartMark2: the frame holds Q and I
  std::uint16_t cartMark2;     ///< see cartMark1
  unsigned char reserved1[14]; ///< not interpreted
};
static_assert(sizeof(FrameHeader) == 24, "FrameHeader is a record of the file");

/// The state of the reader's tokeniser: a private copy of the string, and the position of the scan in it.
struct ST_STR {
  std::unique_ptr<char[]> buffer;
  char *next = nullptr;
};

/// Read-only access to a recorded IQ file of the IQF format: a text header of names and values, frames of
/// 16-bit sample pairs, and a flatness record behind the last frame.
///
/// The file starts with one digit d from 1 to 9, d decimal digits that tell the length of the text header in
/// bytes, and the text header. Frame i stands GetDataOffset() + 4120 i bytes from the start: a FrameHeader
/// and 1024 pairs of little-endian 16-bit integers, Q before I, of which the first GetFFTPoints() count.
///
/// The constructor parses the header. The samples stay in the file: each read opens it anew and closes it
/// before it returns or throws, so the file must stay in its place, and concurrent reads of one object are
/// safe if each has its own vectors. A copy is an independent reader of the same file.
///
/// No count in the file is trusted:
/// - A header that cannot be one is refused with QORNException 13001: no first digit from 1 to 9, a negative
///   length or one beyond the end of the file, more than 50 names with their values. One deviation
///   ends the program, by std::abort, as it always did: a first character above '9' in ASCII. A program that
///   opens files of unknown origin looks at that character first.
/// - Reads are refused with 10002 if GetFFTPoints() is not within 1 to 1024, if a frame, sample or count is
///   negative, if the samples asked for are more than a vector can hold, or if more than 4096 frames of
///   those asked for lie behind the end of the file.
/// - Otherwise what is missing at the end of a file reads as zeros, and the read reports true. What the
/// system
///   fails to read is zero as well, and its error then stands in errno.
///
/// All reads throw 13001 if the file cannot be opened, and 11001 if there is no memory. Reads into VecCplx32
/// and VecReal32 allocate nothing but what their vectors need to grow.
class QORN_API IQFReader {
public:
  /// Opens the file at path and parses its header. Reads open the file by the first 999 characters of path.
  /// Throws 13001 if there is no such file or it is no recording, 11001 if there is no memory.
  IQFReader(const char *path);
  IQFReader(const IQFReader &other);
  IQFReader &operator=(const IQFReader &other);
  ~IQFReader();

  /// Copies the value of the first header record whose name is key, case included, to value, which has room
  /// for 61 characters, and gives true. Without such a record value becomes empty and the result is false.
  /// Names longer than 40 characters are kept to 40, values to 60.
  bool GetHeader(const char *key, char *value) const;

  /// Writes all header records to the standard output, in the order of the file, one line each: the name,
  /// " = " and the value.
  void ListHeader() const;

  /// Bytes from the start of the file to frame 0.
  int GetDataOffset() const { return dataOffset; }
  /// "ValidFrames": the number of frames, as the header tells; 0 if it does not.
  int GetNofValidFrames() const { return validFrames; }
  /// "FFTPoints": samples per frame; 0 if the header does not tell.
  int GetFFTPoints() const { return fftPoints; }
  /// "Bins"; 0 if the header does not tell.
  int GetNofBins() const { return nofBins; }
  /// "MultiFrames"; 1 if the header does not tell.
  int GetNofMultiFrames() const { return multiFrames; }
  /// ceil(frames / block size) for a recording of at least one frame; 0 if the block size is not positive.
  int GetNofBlocks() const { return nofBlocks; }
  /// "BlockSize": frames per block; 0 if the header does not tell.
  int GetBlockSize() const { return blockSize; }
  /// The frames that are left for the first block if all others are full; 0 if the block size is not
  /// positive.
  int GetFirstBlockSize() const { return firstBlockSize; }

  /// "FrameLength": seconds per frame; 0 if the header does not tell, as for the values that follow.
  double GetFrameLength() const { return frameLength; }
  /// "UnitPeriod", seconds.
  double GetUnitPeriod() const { return unitPeriod; }
  /// "MaxInputLevel", dBm.
  double GetMaxInputLevel() const { return maxInputLevel; }
  /// "CenterFrequency", hertz.
  double GetCenterFrequency() const { return centerFrequency; }
  /// "Span", hertz.
  double GetSpan() const { return span; }
  /// Volts per integer step: sqrt(10^(L / 10) / 20 * 2), the peak voltage of L dBm in a 50 ohm system, with L
  /// the sum of "MaxInputLevel", "GainOffset" and "LevelOffset".
  double GetScalingFactor() const { return scalingFactor; }

  /// Samples per second: GetFFTPoints() / GetFrameLength(). Infinite or not-a-number for a length of 0.
  double GetSamplingFrequency() const { return fftPoints / frameLength; }
  /// GetBlockSize() * GetFFTPoints(). This and the next two stop at the limits of int.
  int GetNofSamplesInBlock() const;
  /// GetNofValidFrames() * GetFFTPoints().
  int GetNoflSamplesInFile() const;
  /// Both a and b become GetFFTPoints() * GetBlockSize().
  void GetTrigPos(int &a, int &b) const;

  /// Reads frames firstFrame to firstFrame + nFrames - 1 into dst, as nFrames * GetFFTPoints() samples in
  /// volts: ((i - IOffset) * s, (q - QOffset) * s), with s the scaling factor rounded to float, in double and
  /// rounded once. headers takes the nFrames frame headers; null if they are not wanted.
  ///
  /// After a frame that is marked as polar all samples so far, those of earlier frames included, are replaced
  /// by (magnitude, phase), and anew after each further one. GetIQData2 gives samples for such frames.
  bool GetIQData(int firstFrame, int nFrames, FrameHeader *headers, VecCplx32 &dst) const;

  /// As GetIQData, with one decision for all frames by the header of the last. If that is marked as
  /// Cartesian:
  /// ((i - IOffset) * s, (q - QOffset) * s) in float, each step rounded. Otherwise, if it is marked as polar:
  /// (i cos q + IOffset, i sin q + QOffset) * s in float, so i is the magnitude and q the phase in radians.
  /// Otherwise, or if there is no last frame, throws 13001; dst then has its length and no particular
  /// contents.
  bool GetIQData2(int firstFrame, int nFrames, FrameHeader *headers, VecCplx32 &dst) const;

  /// Reads n samples from sample start of the file into dst, as GetIQData gives them for the frames that hold
  /// them and no others. Throws 10002 if start or n is negative. The double form widens the floats.
  bool ReadIQData(int start, int n, VecCplx32 &dst) const;
  bool ReadIQData(int start, int n, VecCplx64 &dst) const;

  /// As ReadIQData, within the length of one block: a read that goes past sample GetNofSamplesInBlock() - 1
  /// is cut short there. Gives the number of samples in dst, which is 0 if start lies past the recording or
  /// past the block. start counts from the start of the file: block has no effect.
  int ReadIQData(int block, int start, int n, VecCplx32 &dst) const;
  int ReadIQData(int block, int start, int n, VecCplx64 &dst) const;

  /// The same as ReadIQData: no flatness correction is applied.
  bool ReadCorrectedIQData(int start, int n, VecCplx32 &dst) const;

  /// Reads the integers of frames as floats: first takes I or the amplitude, second Q or the phase. Both get
  /// nFrames * GetFFTPoints() elements, but frame f starts at element 1024 f: with fewer than 1024 points per
  /// frame the unused rest of each frame stands between, and the last frames do not fit.
  bool GetRawIQAPData(int firstFrame, int nFrames, FrameHeader *headers, VecReal32 &first,
                      VecReal32 &second) const;

  /// Reads the flatness record behind the last frame, GetFFTPoints() elements each: amplitude[k] is the first
  /// integer of pair k times 2^-7, phase[k] the second times -2^-7. header may be null.
  bool GetFlatness(VecReal32 &amplitude, VecReal32 &phase) const;
  bool GetFlatness(FrameHeader *header, VecReal32 &amplitude, VecReal32 &phase) const;
  bool GetFlatness(FrameHeader *header, VecReal64 &amplitude, VecReal64 &phase) const;

  /// Reads the integers of the flatness record as floats, with no scale.
  bool GetRawFlatness(FrameHeader *header, VecReal32 &first, VecReal32 &second) const;

private:
  friend struct IQFReaderPeer; // gives tests the parsing below

  struct HeaderItem {
    char name[41];
    char value[61];
  };

  // Copying throws QORNException 11001 if there is no memory.
  struct HeaderItems : std::vector<HeaderItem> {
    HeaderItems() = default;
    HeaderItems(const HeaderItems &other);
    HeaderItems &operator=(const HeaderItems &other);
  };

  // The first character of s that is in set, or null.
  static char *StrPBrk(char *s, const char *set);
  static int InitStrTok(ST_STR &state);
  static int FreeStrTok(ST_STR &state);
  // The next token of the string of the last call with an s that is not null, or null if there is none.
  static char *StrTok(const char *s, const char *delimiters, ST_STR &state);
  // A number with the prefix of a unit as its last character: G, K or k, M, m, u, n, p.
  static double Convert(const char *s);
  // Whether x lies within ref - |tol| to ref + |tol|.
  static bool Compare(double x, double ref, double tol);
  static bool Compare(double x, const char *ref, const char *tol);

  class FrameFile;
  void ReadSamples(FrameFile &frames, int skipped, int n, FrameHeader *headers, Cplx32 *dst) const;

  void ParseHeader(const char *text);
  void SetFields();
  int IntegerOf(const char *key, int otherwise) const;
  double RealOf(const char *key) const;
  double ScaledRealOf(const char *key) const;
  int CheckedSize(int firstFrame, int nFrames, int pointsPerFrame) const;
  template <class Vector> int ReadWithinBlock(int start, int n, Vector &dst) const;
  template <class Real, class Vector>
  bool ReadFlatness(FrameHeader *header, Vector &first, Vector &second, Real firstScale,
                    Real secondScale) const;

  HeaderItems headerItems; // first: an assignment that finds no memory for them changes nothing
  char fileName[1024] = {};
  int fftPoints;
  int nofBins;
  double maxInputLevel;
  double levelOffset;
  double centerFrequency;
  double span;
  int blockSize;
  int firstBlockSize;
  int validFrames;
  double unitPeriod;
  double frameLength;
  double gainOffset;
  int multiFrames;
  double scalingFactor;
  double iOffset;
  double qOffset;
  int dataOffset;
  int nofBlocks;
};

} // namespace QORN

#endif

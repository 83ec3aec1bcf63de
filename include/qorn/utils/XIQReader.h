#ifndef QORN_UTILS_XIQREADER_H
#define QORN_UTILS_XIQREADER_H

#include <memory>
#include <string_view>
#include <vector>

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

class BinaryFile;
class VecCplx32;
class VecCplx64;

/// Read-only access to a recorded IQ file of the XIQ format: a header of XML text, and behind it one or more
/// data sets of samples.
///
/// The samples start as many bytes from the start of the file as the first line tells. A data set is
/// QueryNumSamples() samples, each a pair of little-endian 32-bit integers, I before Q; data set k follows
/// data set k - 1 without a gap.
///
/// The header is not parsed as XML. It is scanned line by line for fixed texts, so a tag, its value and its
/// closing tag must stand on one line, as the recording instruments write them:
///
/// - Lines are looked at in pieces of 1023 characters, up to their first zero byte.
/// - A value is the number from the second character behind its key up to the next "<", or up to the
///   next quotation mark for the attribute DataFile offset. So the first character of that attribute does not
///   count: offset="0123" is 123.
/// - The keys of a line are tried in the order Frequency, AcquisitionBandwidth, MaxSpan, RFAttenuation,
///   ReferenceLevel, NumberSamples, SamplingFrequency, Scaling, and the first that fits takes the line. A key
///   fits if the line holds it, the slash and the name of its closing tag, and the terminator behind the key.
///   Of a key that comes twice the later value counts. The line with /DataSetsCollection ends this scan.
/// - Each line with \<DataSet\> is a data set, whose trigger position and time stamp offset stand on the next
///   two lines. This scan goes through the whole file, samples included, in one pass.
/// - The line behind the one that names the parameter anOffset or anLenReq holds its Value. The line with
///   /Setup or Setup/ ends this scan.
///
/// What is missing or no number is 0, what is not finite or too large for an int is stopped at its limits,
/// and no header is refused. A first line without the attribute gives an offset of -1.
///
/// The file stays open as long as the object lives. Reads neither change the object nor allocate more than
/// their vector needs to grow, and may run at once if each has its own vector. A copy is an independent
/// reader with a handle of its own.
///
/// No count in the file is trusted. Samples that lie behind the end of the file read as zeros; but if these
/// are more than 4194304, or if there are more than a vector can hold, the read is refused with 10002.
/// What the system fails to read counts as missing, in the header as in the samples, and its error then
/// stands in errno. Samples that lie before the start of the file, for a negative data set or offset, are
/// read from its start.
///
/// Errors leave as QORNException with the path literal "utils\XIQReader".
class QORN_API XIQReader {
public:
  static constexpr int MAX_CHAR_PER_LINE = 1024;          ///< a line's characters and a terminating zero
  static constexpr int NUM_ELEMENTS_IN_ACQINFO = 8;       ///< fields of AcqInfoStruct
  static constexpr int HEADER_INFO_BITWISE_PATTERN = 255; ///< one bit for each field that was found

  /// How the samples were acquired.
  struct AcqInfoStruct {
    double samplingFrequency;    ///< hertz
    int numberSamples;           ///< samples in a data set
    double scaling;              ///< volts per integer step
    double frequency;            ///< centre frequency, hertz
    double acquisitionBandwidth; ///< hertz
    double maxSpan;              ///< hertz
    double rfAttenuation;        ///< dB
    double referenceLevel;       ///< dBm
  };

  /// How they were to be analysed.
  struct SetupInfoStruct {
    double anOffset; ///< analysis offset
    double anLenReq; ///< analysis length requested
  };

  /// The time of one data set.
  struct DataSetInfoStruct {
    double triggerPosition; ///< seconds
    double timestampOffset; ///< seconds
  };

  /// Opens the file at path and scans it. Throws 13001 if there is no such file or it is none that can be
  /// read at any place, 11001 if there is no memory.
  XIQReader(const char *path);
  XIQReader(const XIQReader &other);
  XIQReader &operator=(const XIQReader &other);
  ~XIQReader();

  /// The number of data sets.
  int QueryNumDataSets() const { return numDataSets; }

  /// Samples in each of them.
  int QueryNumSamples() const { return acqInfo.numberSamples; }

  void QueryAcqInfo(AcqInfoStruct &info) const { info = acqInfo; }
  void QuerySetupInfo(SetupInfoStruct &info) const { info = setupInfo; }

  /// The times of a data set, counted from 0; zeros for one that is not there.
  void QueryDataSetInfo(DataSetInfoStruct &info, int set) const;

  /// Reads a whole data set: element k is scaling * (i, q) of sample k. In VecCplx32 the scaling, i and q are
  /// each rounded to float first; in VecCplx64 i and scaling are double, and q is rounded to float first.
  ///
  /// Throws 10002 if set is above the number of data sets. A set equal to it is what follows the last one in
  /// the file.
  ///@{
  void ReadIQSamples(VecCplx32 &dst, int set) const;
  void ReadIQSamples(VecCplx64 &dst, int set) const;
  ///@}

  /// Reads n samples of a data set from sample start on. Throws 10002 also if start or n is negative or
  /// start + n is above QueryNumSamples().
  ///@{
  void ReadIQSamples(VecCplx32 &dst, int set, int start, int n) const;
  void ReadIQSamples(VecCplx64 &dst, int set, int start, int n) const;
  ///@}

  /// Reads all data sets, one behind the other.
  ///@{
  void ReadAllDataSetsIQSamples(VecCplx32 &dst) const;
  void ReadAllDataSetsIQSamples(VecCplx64 &dst) const;
  ///@}

private:
  friend struct XIQReaderPeer; // gives tests the scans below

  // Sets value to the number in line that stands one character behind key, up to the terminator. False, and
  // 0, if the line lacks the key, the closing key or the terminator.
  static bool GetValueFromKey(std::string_view line, std::string_view key, std::string_view closeKey,
                              double &value, std::string_view terminator);
  // The same with "/" and the key as the closing key, up to "<".
  static bool GetValueFromKey(std::string_view line, std::string_view key, double &value);

  int ExtractBinDataOffset() const;
  void ExtractDataSetsInfo();
  bool ExtractAcqInfo(); // true if each field was found once
  void ExtractSetupInfo();

  template <class Vector> void ReadPart(Vector &dst, int set, int start, int n) const;
  template <class Vector> void ReadAll(Vector &dst) const;
  template <class T> void ReadSamples(long long index, int n, T *dst) const;
  void CheckSet(int set) const;
  void CheckPart(int set, int start, int n) const;
  void CheckHeld(long long index, long long n) const;
  long long PositionOf(long long index) const;

  char fileName[1000] = {};
  int fileOpen = 0;
  std::unique_ptr<BinaryFile> file;
  AcqInfoStruct acqInfo = {};
  SetupInfoStruct setupInfo = {};
  int numDataSets = 0;
  std::vector<DataSetInfoStruct> dataSets;
  int binDataOffset = -1;
};

} // namespace QORN

#endif

#include "backend/tables/om/Chart.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/PayloadData.h"

namespace {

// Reverses the `n` bytes at `p`.
void DoSwapBytes(char* p, unsigned int n) {
  for (char* q = p + n - 1; p < q; ++p, --q) {
    std::swap(*p, *q);
  }
}

// Reads the values of a map-information record in order, and never past its end: the record comes
// from outside the process.
class MapInfoReader {
 public:
  explicit MapInfoReader(const std::string& record) : at(record.data()), left(record.size()) {
    std::uint16_t mark = 1;
    Take(mark);
    reversed = mark != 1;
  }

  // Reads a length and the string after it. If the string is incomplete, returns false and does not
  // change `s`.
  template <typename Length>
  bool Read(std::string& s) {
    Length length = 0;
    if (!Take(length)) {
      return false;
    }
    if (reversed) {
      DoSwapBytes(reinterpret_cast<char*>(&length), sizeof length);
    }
    if (left < length) {
      return false;
    }
    s.assign(at, length);
    Skip(length);
    return true;
  }

 private:
  template <typename Integer>
  bool Take(Integer& value) {
    if (left < sizeof value) {
      return false;
    }
    std::memcpy(&value, at, sizeof value);
    Skip(sizeof value);
    return true;
  }
  void Skip(std::size_t bytes) {
    at += bytes;
    left -= bytes;
  }

  const char* at;
  std::size_t left;
  bool reversed = false;
};

}  // namespace

struct OmChart::Data {
  Data(const std::string& localeCodePage_, long long chartId_)
      : localeCodePage(localeCodePage_), chartId(chartId_) {}

  std::string xmlDescription;
  std::string xmlData;
  std::string imageData;
  std::string vizJSON;
  std::string localeCodePage;
  std::string mapInfo;
  std::vector<std::string> csvFileNames;
  std::vector<std::string> csvFiles;
  std::vector<std::string> geoJSONFileNames;
  std::vector<std::string> geoJSONContents;
  std::string vizJSONTemplate;
  std::string options;
  std::int32_t editable;  // not initialised, on purpose: it has no value before Done
  std::int32_t editor = 1;
  ChartXMLContentSubType chartSubType = kChartSubTypeNone;
  long long chartId;
  std::string graphServiceOptions;
  std::string graphServiceVariables;
  std::uint32_t xmlUncompressedLength = 0;  // kept for producers; nothing here reads it
  bool done = false;                        // whether `editable` has a value
};

OmChart::OmChart(const OmCellText& title_, const std::string& localeCodePage, long long chartId)
    : OmOutputPart(title_), _my(new Data(localeCodePage, chartId)) {
  ConvertTitle(*this, localeCodePage);
}

OmChart::~OmChart() = default;

void OmChart::Accept(Visitor& v) {
  v.Visit(*this);
}

// Chunks are appended without reserve(): append grows the capacity by a factor, while an exact
// reservation could copy all bytes again for every chunk.

void OmChart::SetXmlDescription(const char* data, unsigned int length) {
  _my->xmlDescription.append(data, length);
}

void OmChart::SetXmlUncompressedLength(unsigned int length) {
  _my->xmlUncompressedLength = length;
}

void OmChart::SetXmlCompressedLength(unsigned int length) {
  _my->xmlDescription.reserve(length);
}

void OmChart::SetBinaryDataStream(const char* data, unsigned int length) {
  _my->xmlData.append(data, length);
}

void OmChart::SetImageStream(const char* data, unsigned int length) {
  _my->imageData.append(data, length);
}

void OmChart::SetViZJSON(const char* data, unsigned int length) {
  _my->vizJSON.append(data, length);
}

void OmChart::SetImageSubType(ChartXMLContentSubType subType) {
  _my->chartSubType = subType;
}

void OmChart::Done(const char* data) {
  std::memcpy(&_my->editable, data, sizeof _my->editable);
  std::memcpy(&_my->editor, data + sizeof _my->editable, sizeof _my->editor);
  _my->done = true;
}

void OmChart::deleteData() {
  // Releases the memory, which clear() would keep.
  std::string().swap(_my->xmlData);
}

const std::string& OmChart::GetXmlDescription() const {
  return _my->xmlDescription;
}

const std::string& OmChart::GetXmlData() const {
  return _my->xmlData;
}

const std::string& OmChart::GetImageData() const {
  return _my->imageData;
}

const std::string& OmChart::GetViZJSONData() const {
  return _my->vizJSON;
}

ChartXMLContentSubType OmChart::GetChartSubType() const {
  return _my->chartSubType;
}

int OmChart::GetEditable() const {
  OM_HARDEN(_my->done, "OmChart::GetEditable");
  return _my->editable;
}

int OmChart::GetEditor() const {
  return _my->editor;
}

const std::string& OmChart::LocaleCodePage() const {
  return _my->localeCodePage;
}

long long OmChart::getChartId() const {
  return _my->chartId;
}

void OmChart::addCSVFileName(const char* name, unsigned int length) {
  _my->csvFileNames.emplace_back(name, length);
}

void OmChart::addCSVFileContent(const char* data, unsigned int length) {
  AddFileContent(_my->csvFiles, _my->csvFileNames, data, length);
}

bool OmChart::hasCSVFile() const {
  return !_my->csvFileNames.empty();
}

const std::vector<std::string>& OmChart::getCSVFileNames() const {
  return _my->csvFileNames;
}

const std::vector<std::string>& OmChart::getCSVFiles() const {
  return _my->csvFiles;
}

void OmChart::addGeoJSONFileName(const char* name, unsigned int length) {
  _my->geoJSONFileNames.emplace_back(name, length);
}

void OmChart::addGeoJSONFileContent(const char* data, unsigned int length) {
  AddFileContent(_my->geoJSONContents, _my->geoJSONFileNames, data, length);
}

bool OmChart::hasGeoJSONFile() const {
  return !_my->geoJSONFileNames.empty();
}

const std::vector<std::string>& OmChart::getGeoJSONFileNames() const {
  return _my->geoJSONFileNames;
}

const std::vector<std::string>& OmChart::getGeoJSONContent() const {
  return _my->geoJSONContents;
}

void OmChart::SetMapInfo(const char* data, unsigned int length) {
  _my->mapInfo.append(data, length);
}

bool OmChart::hasMap() const {
  return !_my->mapInfo.empty();
}

void OmChart::getMapInfo(std::string& s1, std::string& s2, std::string& s3, std::string& s4) const {
  MapInfoReader reader(_my->mapInfo);
  // Reading stops at the first incomplete string.
  static_cast<void>(reader.Read<std::uint32_t>(s1) && reader.Read<std::uint16_t>(s2) &&
                    reader.Read<std::uint32_t>(s3) && reader.Read<std::uint16_t>(s4));
}

void OmChart::setVizJSONTemplate(const char* data, unsigned int length) {
  _my->vizJSONTemplate.append(data, length);
}

const std::string& OmChart::getVizJSONTemplate() const {
  return _my->vizJSONTemplate;
}

void OmChart::setOptions(const std::string& options) {
  _my->options = options;
}

std::string& OmChart::getOptions() {
  return _my->options;
}

const std::string& OmChart::getOptions() const {
  return _my->options;
}

void OmChart::setGraphServiceOptions(const char* data, unsigned int length) {
  _my->graphServiceOptions.append(data, length);
}

const std::string& OmChart::getGraphServiceOptions() const {
  return _my->graphServiceOptions;
}

void OmChart::setGraphServiceVariables(const char* data, unsigned int length) {
  _my->graphServiceVariables.append(data, length);
}

const std::string& OmChart::getGraphServiceVariables() const {
  return _my->graphServiceVariables;
}

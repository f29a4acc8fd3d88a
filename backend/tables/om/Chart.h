// OmChart, the output item that carries a chart.
//
// A container: a producer fills it, large payloads in chunks of any size, and a consumer reads it
// back. It neither draws nor interprets what it holds, except the map information. Appending costs
// amortised constant time per byte, however small the chunks are.

#ifndef BACKEND_TABLES_OM_CHART_H
#define BACKEND_TABLES_OM_CHART_H

#include <memory>
#include <string>
#include <vector>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/OutputPart.h"

// The kind of chart that the XML describes. Producers and consumers define the values; only the
// initial one has a name here.
enum ChartXMLContentSubType : int { kChartSubTypeNone = 0 };

// All strings are byte strings and may hold zero bytes. A setter that takes a pointer and a length
// appends that many bytes and needs no terminator. If memory runs out, the bytes appended before
// remain.
class OM_API OmChart : public OmOutputPart {
 public:
  // If `localeCodePage` is not empty, the item's title is a string cell with the text of `title`
  // converted into that code page, so it is not UTF-8. If the text cannot be converted, the cell
  // has the unconverted text. SetTitle does not convert.
  OmChart(const OmCellText& title, const std::string& localeCodePage, long long chartId);
  ~OmChart() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  // --- The chart's XML, data and image ---------------------------------------------------------

  virtual void SetXmlDescription(const char* data, unsigned int length);
  virtual void SetXmlUncompressedLength(unsigned int length);
  // Reserves room for that many bytes of compressed XML, which SetXmlDescription appends.
  virtual void SetXmlCompressedLength(unsigned int length);
  virtual void SetBinaryDataStream(const char* data, unsigned int length);
  virtual void SetImageStream(const char* data, unsigned int length);
  virtual void SetViZJSON(const char* data, unsigned int length);
  virtual void SetImageSubType(ChartXMLContentSubType subType);
  // Ends the delivery. Reads two 32-bit integers in the machine's byte order from the eight bytes
  // at `data`; GetEditable and GetEditor return them.
  virtual void Done(const char* data);
  // Clears only the binary data stream, for a consumer that has copied it, and releases its memory.
  void deleteData();

  [[nodiscard]] const std::string& GetXmlDescription() const;
  [[nodiscard]] const std::string& GetXmlData() const;
  [[nodiscard]] const std::string& GetImageData() const;
  [[nodiscard]] const std::string& GetViZJSONData() const;
  [[nodiscard]] ChartXMLContentSubType GetChartSubType() const;
  // Must not be called before Done, which sets the value.
  [[nodiscard]] int GetEditable() const;
  // Is 1 before Done.
  [[nodiscard]] int GetEditor() const;
  [[nodiscard]] const std::string& LocaleCodePage() const;
  [[nodiscard]] long long getChartId() const;

  // --- Data files ------------------------------------------------------------------------------

  // A file's name is added first, then its content in one or more chunks. Names and contents
  // correspond by position. A chunk is appended to the last content if there are as many contents
  // as names, and at least one; otherwise it starts a new content.
  void addCSVFileName(const char* name, unsigned int length);
  void addCSVFileContent(const char* data, unsigned int length);
  // Whether a name was added.
  [[nodiscard]] bool hasCSVFile() const;
  [[nodiscard]] const std::vector<std::string>& getCSVFileNames() const;
  [[nodiscard]] const std::vector<std::string>& getCSVFiles() const;

  // The same for GeoJSON files.
  void addGeoJSONFileName(const char* name, unsigned int length);
  void addGeoJSONFileContent(const char* data, unsigned int length);
  [[nodiscard]] bool hasGeoJSONFile() const;
  [[nodiscard]] const std::vector<std::string>& getGeoJSONFileNames() const;
  [[nodiscard]] const std::vector<std::string>& getGeoJSONContent() const;

  // --- Map information -------------------------------------------------------------------------

  void SetMapInfo(const char* data, unsigned int length);
  [[nodiscard]] bool hasMap() const;
  // Reads the four strings of the map information. The record is a 16-bit byte-order mark, then
  // each string after its length, an integer of 32, 16, 32 and 16 bits; there is no padding. If the
  // mark is not 1, the bytes of every length are reversed. A string that is incomplete in the
  // record, and the strings after it, are not changed.
  void getMapInfo(std::string& s1, std::string& s2, std::string& s3, std::string& s4) const;

  // --- Templates and options -------------------------------------------------------------------

  void setVizJSONTemplate(const char* data, unsigned int length);
  [[nodiscard]] const std::string& getVizJSONTemplate() const;
  // Replaces the options; the reference that getOptions returns may be written to.
  void setOptions(const std::string& options);
  [[nodiscard]] std::string& getOptions();
  [[nodiscard]] const std::string& getOptions() const;
  void setGraphServiceOptions(const char* data, unsigned int length);
  [[nodiscard]] const std::string& getGraphServiceOptions() const;
  void setGraphServiceVariables(const char* data, unsigned int length);
  [[nodiscard]] const std::string& getGraphServiceVariables() const;

 private:
  struct Data;

  std::unique_ptr<Data> _my;
};

#endif

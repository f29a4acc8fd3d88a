// OmChart, the output item that carries a chart.
//
// A container: a producer fills it, large payloads in chunks of any size, and a consumer reads it
// back. It neither draws nor interprets what it holds, the map information apart. Appending costs
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
// appends that many bytes and needs no terminator. Where memory runs out, what arrived before
// stays.
class OM_API OmChart : public OmOutputPart {
 public:
  // Converts the title into the code page, unless that is empty. Whatever the kind of `title`, the
  // item's is a string cell then, and its text is in that code page, not in UTF-8. Where the title
  // cannot be converted, the cell has the unconverted text. A later SetTitle converts nothing.
  OmChart(const OmCellText& title, const std::string& localeCodePage, long long chartId);
  ~OmChart() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  // --- The chart's XML, data and image ---------------------------------------------------------

  virtual void SetXmlDescription(const char* data, unsigned int length);
  virtual void SetXmlUncompressedLength(unsigned int length);
  // Makes room for that many bytes of XML, which arrive compressed through SetXmlDescription.
  virtual void SetXmlCompressedLength(unsigned int length);
  virtual void SetBinaryDataStream(const char* data, unsigned int length);
  virtual void SetImageStream(const char* data, unsigned int length);
  virtual void SetViZJSON(const char* data, unsigned int length);
  virtual void SetImageSubType(ChartXMLContentSubType subType);
  // Ends the delivery. Takes two 32-bit integers from the eight bytes at `data`, in the machine's
  // byte order: what GetEditable and GetEditor return.
  virtual void Done(const char* data);
  // Empties the binary data stream alone, for a consumer that has taken it.
  void deleteData();

  [[nodiscard]] const std::string& GetXmlDescription() const;
  [[nodiscard]] const std::string& GetXmlData() const;
  [[nodiscard]] const std::string& GetImageData() const;
  [[nodiscard]] const std::string& GetViZJSONData() const;
  [[nodiscard]] ChartXMLContentSubType GetChartSubType() const;
  // Has no value before Done, and must not be read then.
  [[nodiscard]] int GetEditable() const;
  // Is 1 before Done.
  [[nodiscard]] int GetEditor() const;
  [[nodiscard]] const std::string& LocaleCodePage() const;
  [[nodiscard]] long long getChartId() const;

  // --- Data files ------------------------------------------------------------------------------

  // A file is announced by its name, then its content arrives in one chunk or more. Names and
  // contents correspond by position. A chunk extends the last content while there are as many
  // contents as names, and at least one; it starts a content otherwise.
  void addCSVFileName(const char* name, unsigned int length);
  void addCSVFileContent(const char* data, unsigned int length);
  // Whether a name was announced.
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
  // Reads the four strings of the map information: a 16-bit byte-order mark, then each string
  // behind its length, of 32, 16, 32 and 16 bits, without padding. A mark other than 1 means that
  // the bytes of every length are reversed. A string that the record does not hold whole, and those
  // behind it, are left as they were.
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

// OmInteractive, the output item that carries an interactive visualisation: JSON, and the GeoJSON
// files that it draws on.

#ifndef BACKEND_TABLES_OM_INTERACTIVE_H
#define BACKEND_TABLES_OM_INTERACTIVE_H

#include <memory>
#include <string>
#include <vector>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/OutputPart.h"

// A container of byte strings. Setters that take a pointer and a length append a chunk of any
// bytes, at amortised constant time per byte; setters that take a string replace. If memory runs
// out, the bytes appended before remain.
class OM_API OmInteractive : public OmOutputPart {
 public:
  // If `localeCodePage` is not empty, the item's title is a string cell with the text of `title`
  // converted into that code page, so it is not UTF-8. If the text cannot be converted, the cell
  // has the unconverted text. SetTitle does not convert.
  OmInteractive(const OmCellText& title, const std::string& localeCodePage,
                long long interactiveId);
  ~OmInteractive() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  [[nodiscard]] const std::string& LocaleCodePage() const;
  [[nodiscard]] long long getInteractiveId() const;

  // A file's name is added first, then its content in one or more chunks. Names and contents
  // correspond by position. A chunk is appended to the last content if there are as many contents
  // as names, and at least one; otherwise it starts a new content.
  void addGeoJSONFileName(const char* name, unsigned int length);
  void addGeoJSONFileContent(const char* data, unsigned int length);
  // Whether a name was added.
  [[nodiscard]] bool hasGeoJSONFile() const;
  [[nodiscard]] const std::vector<std::string>& getGeoJSONFileNames() const;
  [[nodiscard]] const std::vector<std::string>& getGeoJSONContent() const;

  void setInteractiveJSON(const char* data, unsigned int length);
  [[nodiscard]] const std::string& getInteractiveJSON() const;
  void setProcedureName(const std::string& name);
  [[nodiscard]] const std::string& getProcedureName() const;
  // The references that the next two getters return may be written to.
  void setJSONPath(const std::string& path);
  [[nodiscard]] std::string& getJSONPath();
  [[nodiscard]] const std::string& getJSONPath() const;
  void setOptions(const std::string& options);
  [[nodiscard]] std::string& getOptions();
  [[nodiscard]] const std::string& getOptions() const;

 private:
  struct Data;

  std::unique_ptr<Data> _my;
};

#endif

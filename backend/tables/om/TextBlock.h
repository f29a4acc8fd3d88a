// OmTextBlock, an item of plain text such as a log or a warning, and OmPageTitle, a text block
// without a title.

#ifndef BACKEND_TABLES_OM_TEXTBLOCK_H
#define BACKEND_TABLES_OM_TEXTBLOCK_H

#include <list>
#include <string>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/OutputPart.h"

class OM_API OmTextBlock : public OmOutputPart {
 public:
  OmTextBlock(const OmCellText& title, const std::string& text);
  ~OmTextBlock() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  // Empty at first. The library adds nothing to it: it is there for the block's users.
  [[nodiscard]] std::list<std::string>& Lines() noexcept { return lines; }
  [[nodiscard]] const std::list<std::string>& Lines() const noexcept { return lines; }
  // True if the title was exactly "Log" when the block was constructed; a later title does not
  // change it.
  [[nodiscard]] bool IsLog() const noexcept { return isLog; }
  [[nodiscard]] const std::string& Text() const noexcept { return text; }

 private:
  std::list<std::string> lines;
  bool isLog;
  std::string text;
};

class OM_API OmPageTitle : public OmTextBlock {
 public:
  explicit OmPageTitle(const std::string& text);
  ~OmPageTitle() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;
};

#endif

// OmHeading, a heading of the outline, and OmProcedure, the heading that opens a procedure's
// output.

#ifndef BACKEND_TABLES_OM_HEADING_H
#define BACKEND_TABLES_OM_HEADING_H

#include <string>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/OutputPart.h"

class OmFootnote;
template <typename T>
class OmVector;

class OM_API OmHeading : public OmOutputPart {
 public:
  explicit OmHeading(const OmCellText& title);
  ~OmHeading() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  // Empty at first. The library adds nothing to it: it is there for the heading's users, who
  // include Footnote.h and Vector.h.
  [[nodiscard]] OmVector<OmFootnote>& Footnotes() noexcept { return *footnotes; }
  [[nodiscard]] const OmVector<OmFootnote>& Footnotes() const noexcept { return *footnotes; }

 private:
  OmVector<OmFootnote>* footnotes;
};

// The library only stores its texts and numbers, except the outline text; the producers and
// consumers of a document agree on their meaning.
class OM_API OmProcedure : public OmHeading {
 public:
  // The outline text is the text of `title`.
  OmProcedure(const OmCellText& title, const std::string& a, const std::string& b,
              const std::string& c);
  ~OmProcedure() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  [[nodiscard]] const std::string& OutlineText() const noexcept { return outlineText; }
  // Sets the outline text, then the title with SetTitle.
  void setOutlineText(const OmCellText& text);

  // The constructor's `a`, `b` and `c`.
  [[nodiscard]] const std::string& TextA() const noexcept { return textA; }
  void TextA(const std::string& value) { textA = value; }
  [[nodiscard]] const std::string& TextB() const noexcept { return textB; }
  void TextB(const std::string& value) { textB = value; }
  [[nodiscard]] const std::string& TextC() const noexcept { return textC; }
  void TextC(const std::string& value) { textC = value; }
  // Empty at first.
  [[nodiscard]] const std::string& ExtraText() const noexcept { return extraText; }
  void ExtraText(const std::string& value) { extraText = value; }

  // Each is 2 at first.
  [[nodiscard]] int NumberA() const noexcept { return numberA; }
  void NumberA(int value) noexcept { numberA = value; }
  [[nodiscard]] int NumberB() const noexcept { return numberB; }
  void NumberB(int value) noexcept { numberB = value; }
  [[nodiscard]] int NumberC() const noexcept { return numberC; }
  void NumberC(int value) noexcept { numberC = value; }
  [[nodiscard]] int NumberD() const noexcept { return numberD; }
  void NumberD(int value) noexcept { numberD = value; }

 private:
  std::string outlineText;
  std::string textA;
  std::string textB;
  std::string textC;
  std::string extraText;
  int numberA = 2;
  int numberB = 2;
  int numberC = 2;
  int numberD = 2;
};

#endif

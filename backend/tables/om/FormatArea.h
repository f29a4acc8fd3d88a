// FormatArea, the text and colour format of one area of a pivot table.

#ifndef BACKEND_TABLES_OM_FORMATAREA_H
#define BACKEND_TABLES_OM_FORMATAREA_H

#include <string>

#include "backend/tables/om/Export.h"

// A handle on a format record.
//
// The record is never released, on purpose: callers keep references to its texts after the handle
// is destroyed, and these stay valid until the process ends. It is on the default heap, where leak
// checkers find it reachable. A copy of a handle refers to the same record.
//
// Texts start empty, the size at 0, and the style and the alignments at -1, which means not set.
class OM_API FormatArea {
 public:
  // The front end that sets formats defines the meaning of each area. Any value may be stored, but
  // a table only looks up these nine.
  enum Area : unsigned int {
    kArea0,
    kArea1,
    kArea2,
    kArea3,
    kArea4,
    kArea5,
    kArea6,
    kArea7,
    kArea8
  };

  explicit FormatArea(Area a);
  FormatArea(const FormatArea& other) = default;
  FormatArea& operator=(const FormatArea& other) = default;
  ~FormatArea();

  [[nodiscard]] Area getArea() const;

  void setFontName(const std::string& name);
  [[nodiscard]] const std::string& getFontName() const;
  void setFontSize(float size);
  [[nodiscard]] float getFontSize() const;
  void setFontStyle(int style);
  [[nodiscard]] int getFontStyle() const;
  void setUnderline(bool underline);
  [[nodiscard]] bool getUnderline() const;

  void setHorizontalAlignment(int alignment);
  [[nodiscard]] int getHorizontalAlignment() const;
  void setVerticalAlignment(int alignment);
  [[nodiscard]] int getVerticalAlignment() const;

  // The left margin starts as 6, the others as 2.
  void setMarginLeft(int margin);
  [[nodiscard]] int getMarginLeft() const;
  void setMarginRight(int margin);
  [[nodiscard]] int getMarginRight() const;
  void setMarginTop(int margin);
  [[nodiscard]] int getMarginTop() const;
  void setMarginBottom(int margin);
  [[nodiscard]] int getMarginBottom() const;

  void setTextColor(const std::string& color);
  [[nodiscard]] const std::string& getTextColor() const;
  void setBackgroundColor(const std::string& color);
  [[nodiscard]] const std::string& getBackgroundColor() const;

  // Whether every other row has the alternate colours.
  void setUseAltRowColors(bool use);
  [[nodiscard]] bool getUseAltRowColors() const;
  void setAlternateTextColor(const std::string& color);
  [[nodiscard]] const std::string& getAlternateTextColor() const;
  void setAlternateBackgroundColor(const std::string& color);
  [[nodiscard]] const std::string& getAlternateBackgroundColor() const;

 private:
  struct Data;

  Data* _my;
};

#endif

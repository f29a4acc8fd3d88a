#include "backend/tables/om/FormatArea.h"

#include "backend/tables/om/Vector.h"

struct FormatArea::Data : OmRegionManaged {
  explicit Data(Area area_) : area(area_) {}

  Area area;
  std::string fontName;
  float fontSize = 0;
  int fontStyle = -1;
  int marginLeft = 6;  // not 2 like the others, on purpose: front ends depend on it
  int marginRight = 2;
  int marginTop = 2;
  int marginBottom = 2;
  bool underline = false;
  int horizontalAlignment = -1;
  int verticalAlignment = -1;
  std::string textColor;
  std::string backgroundColor;
  bool useAltRowColors = false;
  std::string alternateTextColor;
  std::string alternateBackgroundColor;
};

// The default heap is never destroyed, so the record stays reachable until the process ends.
FormatArea::FormatArea(Area a) : _my(new (nullptr) Data(a)) {}

// Does not release the record, on purpose (see the header).
FormatArea::~FormatArea() = default;

FormatArea::Area FormatArea::getArea() const {
  return _my->area;
}

void FormatArea::setFontName(const std::string& name) {
  _my->fontName = name;
}

const std::string& FormatArea::getFontName() const {
  return _my->fontName;
}

void FormatArea::setFontSize(float size) {
  _my->fontSize = size;
}

float FormatArea::getFontSize() const {
  return _my->fontSize;
}

void FormatArea::setFontStyle(int style) {
  _my->fontStyle = style;
}

int FormatArea::getFontStyle() const {
  return _my->fontStyle;
}

void FormatArea::setUnderline(bool underline) {
  _my->underline = underline;
}

bool FormatArea::getUnderline() const {
  return _my->underline;
}

void FormatArea::setHorizontalAlignment(int alignment) {
  _my->horizontalAlignment = alignment;
}

int FormatArea::getHorizontalAlignment() const {
  return _my->horizontalAlignment;
}

void FormatArea::setVerticalAlignment(int alignment) {
  _my->verticalAlignment = alignment;
}

int FormatArea::getVerticalAlignment() const {
  return _my->verticalAlignment;
}

void FormatArea::setMarginLeft(int margin) {
  _my->marginLeft = margin;
}

int FormatArea::getMarginLeft() const {
  return _my->marginLeft;
}

void FormatArea::setMarginRight(int margin) {
  _my->marginRight = margin;
}

int FormatArea::getMarginRight() const {
  return _my->marginRight;
}

void FormatArea::setMarginTop(int margin) {
  _my->marginTop = margin;
}

int FormatArea::getMarginTop() const {
  return _my->marginTop;
}

void FormatArea::setMarginBottom(int margin) {
  _my->marginBottom = margin;
}

int FormatArea::getMarginBottom() const {
  return _my->marginBottom;
}

void FormatArea::setTextColor(const std::string& color) {
  _my->textColor = color;
}

const std::string& FormatArea::getTextColor() const {
  return _my->textColor;
}

void FormatArea::setBackgroundColor(const std::string& color) {
  _my->backgroundColor = color;
}

const std::string& FormatArea::getBackgroundColor() const {
  return _my->backgroundColor;
}

void FormatArea::setUseAltRowColors(bool use) {
  _my->useAltRowColors = use;
}

bool FormatArea::getUseAltRowColors() const {
  return _my->useAltRowColors;
}

void FormatArea::setAlternateTextColor(const std::string& color) {
  _my->alternateTextColor = color;
}

const std::string& FormatArea::getAlternateTextColor() const {
  return _my->alternateTextColor;
}

void FormatArea::setAlternateBackgroundColor(const std::string& color) {
  _my->alternateBackgroundColor = color;
}

const std::string& FormatArea::getAlternateBackgroundColor() const {
  return _my->alternateBackgroundColor;
}

#include "examples/report/HtmlLooks.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/PivotTable.h"
#include "examples/report/TableLook.h"

namespace report {

namespace {

// Where an area is within a table, and where its part of every other row is, if it has one.
struct AreaSelector {
  FormatArea::Area area;
  const char* selector;
  const char* alternate;
};

constexpr AreaSelector kSelectors[] = {
    {area::kTable, "", nullptr},
    {area::kTitle, " .title", nullptr},
    {area::kLayers, " .layers", nullptr},
    {area::kCorner, " .corner", nullptr},
    {area::kColumnLabels, " thead .label", nullptr},
    {area::kRowLabels, " tbody .label", " .alternate .label"},
    {area::kData, " tbody td", " .alternate td"},
    {area::kCaption, " .caption", nullptr},
    {area::kFootnotes, " .footnotes", nullptr},
};

bool IsHexColor(const std::string& color) {
  return (color.size() == 4 || color.size() == 7) && color[0] == '#' &&
         std::all_of(color.begin() + 1, color.end(),
                     [](unsigned char c) { return std::isxdigit(c) != 0; });
}

// Only what is surely a colour reaches a style sheet.
bool IsColor(const std::string& color) {
  return IsHexColor(color) ||
         (!color.empty() && std::all_of(color.begin(), color.end(),
                                        [](unsigned char c) { return std::isalpha(c) != 0; }));
}

// Returns a font name as a quoted string of a style sheet, all but plain characters escaped.
std::string FontName(const std::string& name) {
  std::string quoted = "\"";
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || std::isalnum(byte) != 0 || c == ' ' || c == '-') {
      quoted += c;
    } else {
      char code[8];
      std::snprintf(code, sizeof(code), "\\%x ", static_cast<unsigned>(byte));
      quoted += code;
    }
  }
  return quoted + '"';
}

struct Rgb {
  double channels[3];
};

Rgb ParseColor(const std::string& color) {
  Rgb rgb{};
  const std::size_t width = color.size() == 4 ? 1 : 2;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::string digits = color.substr(1 + i * width, width);
    rgb.channels[i] = std::stoi(width == 1 ? digits + digits : digits, nullptr, 16) / 255.0;
  }
  return rgb;
}

std::string ColorRules(const std::string& text, const std::string& background) {
  std::string rules;
  if (IsColor(text)) {
    rules += "color:" + text + ";";
  }
  if (IsColor(background)) {
    rules += "background-color:" + background + ";";
  }
  return rules;
}

std::string DarkColorRules(const std::string& text, const std::string& background) {
  return ColorRules(DarkCounterpart(text), DarkCounterpart(background));
}

std::string FontRules(const FormatArea& format) {
  std::string rules;
  if (!format.getFontName().empty()) {
    rules += "font-family:" + FontName(format.getFontName()) + ",sans-serif;";
  }
  if (std::isfinite(format.getFontSize()) && format.getFontSize() > 0) {
    char size[64];
    std::snprintf(size, sizeof(size), "font-size:%gpt;", static_cast<double>(format.getFontSize()));
    rules += size;
  }
  const int style = format.getFontStyle();
  if (style >= kPlain && style <= kBoldItalic) {
    rules += style == kBold || style == kBoldItalic ? "font-weight:600;" : "font-weight:400;";
    rules += style == kItalic || style == kBoldItalic ? "font-style:italic;" : "font-style:normal;";
  }
  if (format.getUnderline()) {
    rules += "text-decoration:underline;";
  }
  return rules;
}

std::string PlacementRules(const FormatArea& format) {
  static const char* const kHorizontal[] = {"left", "center", "right"};
  static const char* const kVertical[] = {"top", "middle", "bottom"};
  std::string rules = "padding:";
  for (const int margin : {format.getMarginTop(), format.getMarginRight(), format.getMarginBottom(),
                           format.getMarginLeft()}) {
    rules += std::to_string(std::max(margin, 0)) + "pt ";
  }
  rules.back() = ';';
  if (format.getHorizontalAlignment() >= kLeft && format.getHorizontalAlignment() <= kRight) {
    rules += std::string("text-align:") + kHorizontal[format.getHorizontalAlignment()] + ";";
  }
  if (format.getVerticalAlignment() >= kTop && format.getVerticalAlignment() <= kBottom) {
    rules += std::string("vertical-align:") + kVertical[format.getVerticalAlignment()] + ";";
  }
  return rules;
}

std::string Rule(const std::string& selector, const std::string& rules) {
  return rules.empty() ? std::string() : "." + selector + "{" + rules + "}\n";
}

// The class of a look stands for the placeholder.
std::string AreaRules(const FormatArea& format, const AreaSelector& where) {
  const std::string selector = std::string("%") + where.selector;
  std::string rules =
      Rule(selector, FontRules(format) + PlacementRules(format) +
                         ColorRules(format.getTextColor(), format.getBackgroundColor()));
  std::string dark =
      Rule(selector, DarkColorRules(format.getTextColor(), format.getBackgroundColor()));
  if (format.getUseAltRowColors() && where.alternate != nullptr) {
    const std::string striped = std::string("%") + where.alternate;
    rules += Rule(striped,
                  ColorRules(format.getAlternateTextColor(), format.getAlternateBackgroundColor()));
    dark += Rule(striped, DarkColorRules(format.getAlternateTextColor(),
                                         format.getAlternateBackgroundColor()));
  }
  if (!dark.empty()) {
    rules += "@media screen and (prefers-color-scheme:dark){\n" + dark + "}\n";
  }
  return rules;
}

}  // namespace

std::string DarkCounterpart(const std::string& color) {
  if (!IsHexColor(color)) {
    return color;
  }
  Rgb rgb = ParseColor(color);
  const double low = *std::min_element(rgb.channels, rgb.channels + 3);
  const double high = *std::max_element(rgb.channels, rgb.channels + 3);
  const double lightness = (low + high) / 2;
  // White turns into the page's dark and black into its white; pure hues keep their strength.
  const double target = 0.11 + (1 - lightness) * 0.82;
  const double roomBefore = std::min(lightness, 1 - lightness);
  const double roomAfter = std::min(target, 1 - target);
  const double scale = roomBefore > 0 ? roomAfter / roomBefore : 0;
  // A tint that was hardly one would glow at full saturation.
  const double limit = std::min(scale, 1.6);
  char text[8];
  int channels[3];
  for (std::size_t i = 0; i < 3; ++i) {
    const double value = target + (rgb.channels[i] - lightness) * limit;
    channels[i] = static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
  }
  std::snprintf(text, sizeof(text), "#%02x%02x%02x", static_cast<unsigned>(channels[0]) & 255U,
                static_cast<unsigned>(channels[1]) & 255U,
                static_cast<unsigned>(channels[2]) & 255U);
  return text;
}

void HtmlLooks::Add(const OmPivotTable& table) {
  std::string rules;
  for (const AreaSelector& entry : kSelectors) {
    const FormatArea* format = table.getAreaFormat(entry.area);
    if (format != nullptr) {
      rules += AreaRules(*format, entry);
    }
  }
  if (!rules.empty()) {
    looks[&table] = numbers.emplace(rules, static_cast<unsigned>(numbers.size())).first->second;
  }
}

std::string HtmlLooks::ClassOf(const OmPivotTable& table) const {
  const auto found = looks.find(&table);
  return found == looks.end() ? std::string() : "look" + std::to_string(found->second);
}

std::string HtmlLooks::Rules() const {
  std::string all;
  for (const auto& [rules, number] : numbers) {
    for (const char c : rules) {
      all += c == '%' ? "look" + std::to_string(number) : std::string(1, c);
    }
  }
  return all;
}

}  // namespace report

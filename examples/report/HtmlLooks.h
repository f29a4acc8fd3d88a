// HtmlLooks turns the area formats of tables into style rules. Tables with equal formats share
// them.

#ifndef EXAMPLES_REPORT_HTMLLOOKS_H
#define EXAMPLES_REPORT_HTMLLOOKS_H

#include <map>
#include <string>
#include <unordered_map>

class OmPivotTable;

namespace report {

// The rules work on the classes that a rendered table gives its areas. Colours get a counterpart of
// the same hue for dark pages.
class HtmlLooks {
 public:
  // Takes up the formats of a table. The table must not change its formats afterwards.
  void Add(const OmPivotTable& table);

  // Returns the class of a table that was taken up, empty where it has no formats.
  [[nodiscard]] std::string ClassOf(const OmPivotTable& table) const;
  // Returns the rules of all tables that were taken up.
  [[nodiscard]] std::string Rules() const;

 private:
  std::map<std::string, unsigned> numbers;  // of the rules, which have "%" for the class
  std::unordered_map<const OmPivotTable*, unsigned> looks;
};

// Returns the counterpart of a colour "#rgb" or "#rrggbb" on a dark page: the same hue, light for
// dark. Any other text is returned as it is.
[[nodiscard]] std::string DarkCounterpart(const std::string& color);

}  // namespace report

#endif

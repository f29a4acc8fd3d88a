#include "examples/report/ChartsBars.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "examples/report/DisplayText.h"
#include "examples/report/HtmlText.h"
#include "examples/report/ProcedureError.h"

namespace report {

namespace {

constexpr std::size_t kMaxBars = 40;
constexpr std::size_t kMaxSeries = 6;
constexpr int kMaxLabel = 24;  // columns of text

// Pixels.
constexpr double kWidth = 520;
constexpr double kBar = 18;
constexpr double kGap = 14;
constexpr double kColumn = 7.2;  // about one column of text
constexpr double kLegend = 34;
constexpr double kAxis = 40;

constexpr char kStyle[] =
    "text{font:13px system-ui,-apple-system,'Segoe UI',Roboto,'Liberation Sans',sans-serif;"
    "fill:#1b2430}.m{fill:#586475}.g{stroke:#d9dde3}.a{stroke:#5b6675}"
    ".s0{fill:#3f72ab}.s1{fill:#dd8a3c}.s2{fill:#5a9e6f}.s3{fill:#b5607f}.s4{fill:#8473b8}"
    ".s5{fill:#8a8f98}"
    "@media(prefers-color-scheme:dark){text{fill:#e3e7ed}.m{fill:#9ba6b5}.g{stroke:#2e353f}"
    ".a{stroke:#8592a3}}";

// A place in the drawing.
std::string At(double value) {
  char text[40];
  std::snprintf(text, sizeof(text), "%.1f", value);
  return text;
}

std::string Shortened(const std::string& text) {
  const std::vector<std::string> lines = BreakLines(text, kMaxLabel);
  return lines.size() > 1 ? lines.front() + "…" : lines.front();
}

// Returns the names up to `most`; where there are more, the last one stands for the rest.
std::vector<std::string> Names(const std::vector<std::string>& all, std::size_t most) {
  if (all.size() <= most) {
    return all;
  }
  std::vector<std::string> names(all.begin(), all.begin() + static_cast<long>(most - 1));
  names.push_back("Others");
  return names;
}

// Returns the step of 1, 2 or 5 times a power of ten that divides `range` into a few parts.
double Step(double range) {
  const double rough = range / 5;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  const double parts = rough / power;
  return power * (parts <= 1 ? 1 : parts <= 2 ? 2 : parts <= 5 ? 5 : 10);
}

class Drawing {
 public:
  explicit Drawing(const Bars& bars_);

  [[nodiscard]] std::string Draw();

 private:
  void Text(double x, double y, const std::string& text, const std::string& attributes);
  void DrawLegend();
  void DrawAxis();
  void DrawCategory(std::size_t category);
  [[nodiscard]] double Length(double value) const { return (right - left) * value / end; }

  const Bars& bars;
  double left;            // where the bars begin
  double right;           // where the axis ends
  double top;             // of the bars
  double height;          // of the bars
  double width = kWidth;  // of the drawing
  double step;
  double end;  // value at the end of the axis
  std::string svg;
};

Drawing::Drawing(const Bars& bars_) : bars(bars_), right(kWidth - 56) {
  int label = 0;
  for (const std::string& category : bars.categories) {
    label = std::max(label, DisplayWidth(Shortened(category)));
  }
  left = 16 + kColumn * label;
  top = bars.seriesName.empty() ? 6 : kLegend;
  const double each = kBar * static_cast<double>(bars.series.size()) + kGap;
  height = each * static_cast<double>(bars.categories.size());
  double most = 1;
  for (const std::vector<double>& values : bars.values) {
    most = std::max(most, *std::max_element(values.begin(), values.end()));
  }
  step = Step(most);
  end = step * std::ceil(most / step);
}

void Drawing::Text(double x, double y, const std::string& text, const std::string& attributes) {
  svg += "<text x=\"" + At(x) + "\" y=\"" + At(y) + "\"" + attributes + ">" + Escape(text) +
         "</text>\n";
}

void Drawing::DrawLegend() {
  if (bars.seriesName.empty()) {
    return;
  }
  const std::string name = Shortened(bars.seriesName);
  Text(left, 14, name, " class=\"m\"");
  double x = left + kColumn * (DisplayWidth(name) + 2);
  for (std::size_t i = 0; i < bars.series.size(); ++i) {
    const std::string label = Shortened(bars.series[i]);
    svg += "<rect class=\"s" + std::to_string(i) + "\" x=\"" + At(x) +
           "\" y=\"4\" width=\"11\" height=\"11\" rx=\"2\"/>\n";
    Text(x + 16, 14, label, "");
    x += 16 + kColumn * (DisplayWidth(label) + 3);
  }
  width = std::max(width, x);
}

void Drawing::DrawAxis() {
  const double foot = top + height;
  const auto steps = static_cast<int>(end * 1.0001 / step);
  for (int i = 0; i <= steps; ++i) {
    const double value = i * step;
    const double x = left + Length(value);
    svg += std::string("<path class=\"") + (value == 0 ? "a" : "g") + "\" d=\"M" + At(x) + " " +
           At(top) + "V" + At(foot) + "\"/>\n";
    Text(x, foot + 16, Number(value), " class=\"m\" text-anchor=\"middle\"");
  }
  Text(left + (right - left) / 2, foot + 34, "Count", " class=\"m\" text-anchor=\"middle\"");
}

void Drawing::DrawCategory(std::size_t category) {
  const std::vector<double>& values = bars.values[category];
  const double room = kBar * static_cast<double>(values.size()) + kGap;
  const double y = top + room * static_cast<double>(category) + kGap / 2;
  Text(left - 9, y + (room - kGap) / 2 + 4.5, Shortened(bars.categories[category]),
       " text-anchor=\"end\"");
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double barTop = y + kBar * static_cast<double>(i);
    svg += "<rect class=\"s" + std::to_string(i) + "\" x=\"" + At(left) + "\" y=\"" +
           At(barTop + 1) + "\" width=\"" + At(Length(values[i])) + "\" height=\"" + At(kBar - 2) +
           "\"/>\n";
    Text(left + Length(values[i]) + 5, barTop + kBar / 2 + 4.5, Number(values[i]), "");
  }
}

std::string Drawing::Draw() {
  DrawLegend();
  DrawAxis();
  for (std::size_t category = 0; category < bars.categories.size(); ++category) {
    DrawCategory(category);
  }
  const std::string size = At(width) + " " + At(top + height + kAxis);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + size + "\" width=\"" +
         At(width) + "\" height=\"" + At(top + height + kAxis) + "\" role=\"img\">\n<title>" +
         Escape(bars.title) + "</title>\n<style>" + kStyle + "</style>\n" + svg + "</svg>\n";
}

std::string JsonList(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += (list.empty() ? "" : ", ") + JsonString(text);
  }
  return "[" + list + "]";
}

}  // namespace

Bars CountBars(const DataSet& data, const Variable& variable, const Variable* by,
               const Weights& weights) {
  std::vector<const Variable*> variables{&variable};
  if (by != nullptr) {
    variables.push_back(by);
  }
  const CrossCounts counts(data, variables, weights);
  if (counts.Valid() == 0) {
    throw ProcedureError("No case has a value of every variable.");
  }
  Bars bars;
  bars.title = variable.Name() + (by != nullptr ? " by " + by->Name() : "");
  bars.categoryName = variable.Name();
  bars.seriesName = by != nullptr ? by->Name() : "";
  bars.categories = Names(variable.Categories(), kMaxBars);
  bars.series = by != nullptr ? Names(by->Categories(), kMaxSeries) : std::vector<std::string>{""};
  bars.values.assign(bars.categories.size(), std::vector<double>(bars.series.size(), 0));
  const auto total = [](const Variable& of) { return static_cast<int>(of.Categories().size()); };
  counts.ForEach([&](const std::vector<int>& place, double count) {
    if (place[0] == total(variable) || (by != nullptr && place[1] == total(*by))) {
      return;
    }
    const std::size_t category = static_cast<std::size_t>(place[0]);
    const std::size_t series = by != nullptr ? static_cast<std::size_t>(place[1]) : 0;
    bars.values[std::min(category, bars.categories.size() - 1)]
               [std::min(series, bars.series.size() - 1)] += count;
  });
  return bars;
}

std::string DrawBars(const Bars& bars) {
  return Drawing(bars).Draw();
}

std::string DescribeBars(const Bars& bars) {
  std::string json = "{\n  \"type\": \"bar\",\n  \"title\": " + JsonString(bars.title) +
                     ",\n  \"x\": \"Count\",\n  \"y\": " + JsonString(bars.categoryName) +
                     ",\n  \"categories\": " + JsonList(bars.categories) + ",\n  \"series\": [";
  for (std::size_t i = 0; i < bars.series.size(); ++i) {
    std::string values;
    for (const std::vector<double>& category : bars.values) {
      values += (values.empty() ? "" : ", ") + Number(category[i]);
    }
    json += std::string(i == 0 ? "\n" : ",\n") + "    {\"name\": " + JsonString(bars.series[i]) +
            ", \"values\": [" + values + "]}";
  }
  return json + "\n  ]\n}\n";
}

}  // namespace report

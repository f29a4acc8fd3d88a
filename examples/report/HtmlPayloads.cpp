#include "examples/report/HtmlPayloads.h"

#include <ostream>
#include <string_view>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "examples/report/DisplayText.h"
#include "examples/report/HtmlText.h"

namespace report {

namespace {

constexpr std::size_t kMaxShownBytes = 65536;

// `sort` is what the item is called, or empty where that can be seen.
void Open(std::ostream& out, const std::string& kind, const std::string& sort,
          const std::string& title, const std::string& id) {
  out << "<figure class=\"payload " << kind << "\" id=\"" << id
      << "\" tabindex=-1>\n<figcaption class=title>" << Escape(title)
      << (sort.empty() ? "" : "<span class=sort>" + sort + "</span>") << "</figcaption>\n";
}

// Writes the name and size of a payload that is not empty; a short text can be unfolded.
void WritePayload(std::ostream& out, const std::string& name, const std::string& bytes) {
  if (bytes.empty()) {
    return;
  }
  const std::string line = "<span class=name>" + Escape(name) + "</span> <span class=size>" +
                           ByteCount(bytes.size()) + "</span>";
  const bool isText =
      bytes.size() <= kMaxShownBytes && IsUtf8(bytes) && bytes.find('\0') == std::string::npos;
  if (isText) {
    out << "<details><summary>" << line << "</summary><pre tabindex=0>" << Escape(bytes)
        << "</pre></details>\n";
  } else {
    out << "<p class=size-only>" << line << "</p>\n";
  }
}

void WriteFiles(std::ostream& out, const std::vector<std::string>& names,
                const std::vector<std::string>& contents) {
  for (std::size_t i = 0; i < contents.size(); ++i) {
    WritePayload(out, i < names.size() ? names[i] : "File", contents[i]);
  }
}

// Returns the media type of an image, by how it begins, or null for one that a page cannot show.
const char* ImageType(const std::string& image) {
  const std::string_view start(image);
  const auto begins = [start](std::string_view with) {
    return start.substr(0, with.size()) == with;
  };
  if (begins("<svg") || (begins("<?xml") && start.find("<svg") != std::string_view::npos)) {
    return "image/svg+xml";
  }
  if (begins("\x89PNG\r\n")) {
    return "image/png";
  }
  if (begins("\xFF\xD8\xFF")) {
    return "image/jpeg";
  }
  return begins("GIF8") ? "image/gif" : nullptr;
}

}  // namespace

// As an image the drawing can neither run a script nor reach the page, whatever it holds.
void WriteChart(std::ostream& out, const OmChart& chart, const std::string& title,
                const std::string& id) {
  Open(out, "chart", "", title, id);
  const std::string& image = chart.GetImageData();
  if (const char* type = ImageType(image)) {
    out << "<div class=scroll role=region tabindex=0 aria-label=\"" << Escape(title)
        << "\"><img alt=\"Chart: " << Escape(title) << "\" src=\"data:" << type << ";base64,"
        << Base64(image) << "\"></div>\n";
  } else {
    WritePayload(out, "Image", image);
  }
  WritePayload(out, "Visualisation", chart.GetViZJSONData());
  WritePayload(out, "Description", chart.GetXmlDescription());
  WritePayload(out, "Data stream", chart.GetXmlData());
  WriteFiles(out, chart.getCSVFileNames(), chart.getCSVFiles());
  WriteFiles(out, chart.getGeoJSONFileNames(), chart.getGeoJSONContent());
  out << "</figure>\n";
}

void WriteModel(std::ostream& out, const OmModel& model, const std::string& title,
                const std::string& id) {
  Open(out, "model", "Model", title, id);
  WritePayload(out, "PMML", model.GetPMML());
  WritePayload(out, "PMML container", model.GetPMMLContainer());
  WritePayload(out, "Statistics container", model.GetStatXMLContainer());
  WritePayload(out, "Data stream", model.GetBinaryDataStream());
  out << "</figure>\n";
}

void WriteInteractive(std::ostream& out, const OmInteractive& interactive, const std::string& title,
                      const std::string& id) {
  Open(out, "interactive", "Interactive view", title, id);
  WritePayload(out, "Visualisation", interactive.getInteractiveJSON());
  WriteFiles(out, interactive.getGeoJSONFileNames(), interactive.getGeoJSONContent());
  out << "</figure>\n";
}

void WriteTreeDiagram(std::ostream& out, const OmDendrix& tree, const std::string& title,
                      const std::string& id) {
  Open(out, "tree", "Tree diagram", title, id);
  WritePayload(out, "Tree", tree.GetUncompressedXml());
  WritePayload(out, "Display", tree.GetUncompressedDisplayXML());
  WritePayload(out, "Compressed tree", tree.GetCompressedXml());
  out << "</figure>\n";
}

}  // namespace report

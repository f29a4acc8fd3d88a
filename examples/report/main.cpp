// Reads a data file, lets the procedures build a document, and shows the document.

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <limits>
#include <string>

#include "backend/tables/om/Contradictions.h"
#include "backend/tables/om/OutputTree.h"
#include "examples/report/Charts.h"
#include "examples/report/CsvReader.h"
#include "examples/report/DataSet.h"
#include "examples/report/DisplayText.h"
#include "examples/report/HtmlFile.h"
#include "examples/report/HtmlReport.h"
#include "examples/report/Options.h"
#include "examples/report/Plan.h"
#include "examples/report/Procedures.h"
#include "examples/report/TextReport.h"

namespace {

constexpr int kInputStatus = 2;
constexpr int kFailureStatus = 1;
constexpr int kDefaultWidth = 80;
constexpr int kMinWidth = 20;

int TerminalWidth() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? std::max<int>(size.ws_col, kMinWidth) : kDefaultWidth;
}

// Writes a message as one line, whatever texts of the data it quotes.
void Report(const char* message) {
  std::string line = "report:";
  for (const std::string& part : report::BreakLines(message, std::numeric_limits<int>::max())) {
    line += " " + part;
  }
  std::cerr << line << '\n';
}

// Reports, in builds with hardening, what the document would show wrongly: mistakes of the
// procedures.
void ReportContradictions([[maybe_unused]] OmOutputTree& document) {
#if defined(OM_HARDENING) && OM_HARDENING
  for (const om::Finding& finding : om::Contradictions(document)) {
    if (finding.weight == om::Finding::Weight::kShownWrongly) {
      Report(finding.sentence.c_str());
    }
  }
#endif
}

void Run(const report::Options& options) {
  const report::DataSet data = report::ReadDataSet(options.file);
  const report::Plan plan = report::MakePlan(data, options);
  OmOutputTree document;
  report::BuildDocument(data, plan, document);
  report::AddCharts(data, plan, document);
  ReportContradictions(document);
  if (!options.html.empty()) {
    report::WriteHtmlFile(document, options.skipEmpty, options.html);
    return;
  }

  report::TextStyle style;
  style.width = options.width != 0 ? options.width : TerminalWidth();
  style.ascii = options.ascii;
  style.skipEmpty = options.skipEmpty;
  report::TextReport(std::cout, style).Write(document);
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  report::SelectCharacterSet();
  try {
    report::Options options;
    int status = 0;
    if (!report::ParseCommandLine(argc, argv, options, status)) {
      return status;
    }
    Run(options);
    return std::cout.flush() ? 0 : kFailureStatus;
  } catch (const report::InputError& error) {
    Report(error.what());
    return kInputStatus;
  } catch (const report::OutputError& error) {
    Report(error.what());
    return kInputStatus;
  } catch (const std::exception& error) {
    Report(error.what());
    return kFailureStatus;
  }
}

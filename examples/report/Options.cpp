#include "examples/report/Options.h"

#include <CLI/CLI.hpp>

namespace report {

namespace {

constexpr int kUsageStatus = 2;

void AddList(CLI::App& app, const std::string& name, std::vector<std::string>& list,
             const std::string& help) {
  app.add_option(name, list, help)
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("VAR[,VAR...]");
}

}  // namespace

bool ParseCommandLine(int argc, char** argv, Options& options, int& status) {
  CLI::App app(
      "Reports on a file of comma-separated values: frequencies, a crosstabulation, descriptives.\n"
      "Without options the variables find their places by themselves.",
      "report");
  options.file = REPORT_DATA_DIR "/titanic.csv";
  app.add_option("FILE", options.file, "The data; the first line names the variables")
      ->capture_default_str();
  AddList(app, "--rows", options.rows, "Variables of the rows, the outermost first");
  AddList(app, "--columns", options.columns, "Variables of the columns, the outermost first");
  AddList(app, "--layers", options.layers, "Variables of the layers, the outermost first");
  AddList(app, "--measures", options.measures, "Variables to be described by mean and deviation");
  app.add_option("--by", options.by, "Describes the measures in each category of VAR")
      ->type_name("VAR");
  app.add_option("--weight", options.weight, "Counts every case as often as VAR says")
      ->type_name("VAR");
  app.add_option("--title", options.title, "Title of the report")->type_name("TEXT");
  app.add_flag("--ascii", options.ascii, "Draws the tables in plain ASCII");
  app.add_flag("--skip-empty", options.skipEmpty, "Leaves out empty rows, columns and layers");
  app.add_option("--html", options.html, "Writes a page that stands alone, instead of text")
      ->type_name("FILE")
      ->check([](const std::string& file) {
        return std::string(file.empty() ? "the name of the file is empty" : "");
      });
  app.add_option("--width", options.width, "Columns of the page; those of the terminal without it")
      ->check(CLI::Range(20, 10000));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? 0 : kUsageStatus;
    return false;
  }
  return true;
}

}  // namespace report

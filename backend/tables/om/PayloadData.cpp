#include "backend/tables/om/PayloadData.h"

#include "backend/tables/om/OutputPart.h"
#include "platform/cells/StringCell.h"
#include "platform/support/Converter.h"

void AddFileContent(std::vector<std::string>& contents, const std::vector<std::string>& names,
                    const char* data, unsigned int length) {
  if (contents.size() == names.size() && !contents.empty()) {
    contents.back().append(data, length);
  } else {
    contents.emplace_back(data, length);
  }
}

void ConvertTitle(OmOutputPart& part, const std::string& codePage) {
  if (codePage.empty()) {
    return;
  }
  const std::string text = part.Title()->Text();
  std::string converted;
  // Nothing between opening and closing the converter throws.
  auto* const converter = QualtexMBConverterNew_A(codePage.c_str());
  const bool failed = QualtexMBU8ToGeneric(converter, converted, text) != 0;
  QualtexMBConverterDelete_A(converter);
  part.SetTitle(OmStringCell(failed ? text : converted, nullptr, false));
}

// The fixed parts of the page. None of them holds data.

#ifndef EXAMPLES_REPORT_HTMLASSETS_H
#define EXAMPLES_REPORT_HTMLASSETS_H

namespace report {

extern const char* const kHtmlStyle;
// What applies on top where scripts do not run: every layer is shown.
extern const char* const kHtmlStyleWithoutScript;
extern const char* const kHtmlScript;

}  // namespace report

#endif

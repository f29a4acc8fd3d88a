// What the items with payloads share: the rule that pairs announced files with their chunks, and
// the title in a code page. Not for callers of the library.

#ifndef BACKEND_TABLES_OM_PAYLOADDATA_H
#define BACKEND_TABLES_OM_PAYLOADDATA_H

#include <string>
#include <vector>

class OmOutputPart;

// Adds a chunk to the contents of files, which correspond to `names` by position. It extends the
// last content while every announced file has one, and starts a content otherwise, also where no
// name was announced at all. Several names announced at once therefore make as many chunks start a
// content.
void AddFileContent(std::vector<std::string>& contents, const std::vector<std::string>& names,
                    const char* data, unsigned int length);

// Replaces the title of `part` by a string cell with the title's text in the named code page, or
// with the unconverted text where it cannot be converted. An empty code page leaves the title
// alone.
void ConvertTitle(OmOutputPart& part, const std::string& codePage);

#endif

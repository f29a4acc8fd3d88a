// Functions shared by the items with payloads: how chunks are assigned to files, and the conversion
// of a title into a code page. Not for callers of the library.

#ifndef BACKEND_TABLES_OM_PAYLOADDATA_H
#define BACKEND_TABLES_OM_PAYLOADDATA_H

#include <string>
#include <vector>

class OmOutputPart;

// Adds a chunk to the contents of files, which correspond to `names` by position. The chunk is
// appended to the last content if there are as many contents as names, and at least one. Otherwise
// it starts a new content, also if there is no name. So if several names are added at once, each of
// the next chunks starts a content until every name has one.
void AddFileContent(std::vector<std::string>& contents, const std::vector<std::string>& names,
                    const char* data, unsigned int length);

// Replaces the title of `part` by a string cell with the title's text in the named code page, or
// with the unconverted text if it cannot be converted. Does nothing if the code page is empty.
void ConvertTitle(OmOutputPart& part, const std::string& codePage);

#endif

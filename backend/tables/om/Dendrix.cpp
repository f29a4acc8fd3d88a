#include "backend/tables/om/Dendrix.h"

#include <cstdint>

struct OmDendrix::Data {
  explicit Data(const std::string& source_) : source(source_) {}

  std::int32_t treeType = -1;
  std::string path;
  std::string compressedXml;
  std::uint32_t xmlUncompressedLength = 0;
  std::string uncompressedXml;
  std::string uncompressedDisplayXml;
  const std::string& source;  // the caller's string, not a copy, on purpose
};

OmDendrix::OmDendrix(const OmCellText& title_, const std::string& s)
    : OmOutputPart(title_), _my(new Data(s)) {}

OmDendrix::~OmDendrix() = default;

void OmDendrix::Accept(Visitor& v) {
  v.Visit(*this);
}

void OmDendrix::SetTreeType(int type) {
  _my->treeType = type;
}

void OmDendrix::SetPath(const char* data, unsigned int length) {
  _my->path.append(data, length);
}

void OmDendrix::SetCompressedXML(const char* data, unsigned int length,
                                 unsigned int uncompressedLength) {
  _my->compressedXml.append(data, length);
  _my->xmlUncompressedLength = uncompressedLength;
}

void OmDendrix::SetUncompressedXML(const char* data, unsigned int length) {
  _my->uncompressedXml.append(data, length);
}

void OmDendrix::SetUncompressedDisplayXML(const char* data, unsigned int length) {
  _my->uncompressedDisplayXml.append(data, length);
}

void OmDendrix::Done() {}

int OmDendrix::GetTreeType() const {
  return _my->treeType;
}

const std::string& OmDendrix::GetPath() const {
  return _my->path;
}

const std::string& OmDendrix::GetCompressedXml() const {
  return _my->compressedXml;
}

unsigned int OmDendrix::GetXmlUncompressedLength() const {
  return _my->xmlUncompressedLength;
}

const std::string& OmDendrix::GetUncompressedXml() const {
  return _my->uncompressedXml;
}

const std::string& OmDendrix::GetUncompressedDisplayXML() const {
  return _my->uncompressedDisplayXml;
}

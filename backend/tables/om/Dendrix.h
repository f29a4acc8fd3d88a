// OmDendrix, the output item that carries a tree diagram as XML.

#ifndef BACKEND_TABLES_OM_DENDRIX_H
#define BACKEND_TABLES_OM_DENDRIX_H

#include <memory>
#include <string>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/OutputPart.h"

// A container of byte strings. Setters that take a pointer and a length append a chunk of any
// bytes, at amortised constant time per byte; if memory runs out, the bytes appended before remain.
class OM_API OmDendrix : public OmOutputPart {
 public:
  // Keeps a reference to `s`, not a copy, on purpose: the callers that read it keep the string
  // alive as long as the item. Nothing in this library reads it.
  OmDendrix(const OmCellText& title, const std::string& s);
  ~OmDendrix() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  // Producers and consumers define the types. It is -1 at first.
  virtual void SetTreeType(int type);
  virtual void SetPath(const char* data, unsigned int length);
  // Each call also replaces the uncompressed length.
  virtual void SetCompressedXML(const char* data, unsigned int length,
                                unsigned int uncompressedLength);
  virtual void SetUncompressedXML(const char* data, unsigned int length);
  virtual void SetUncompressedDisplayXML(const char* data, unsigned int length);
  // Marks the end of the delivery, and does nothing.
  virtual void Done();

  [[nodiscard]] int GetTreeType() const;
  [[nodiscard]] const std::string& GetPath() const;
  [[nodiscard]] const std::string& GetCompressedXml() const;
  [[nodiscard]] unsigned int GetXmlUncompressedLength() const;
  [[nodiscard]] const std::string& GetUncompressedXml() const;
  [[nodiscard]] const std::string& GetUncompressedDisplayXML() const;

 private:
  struct Data;

  std::unique_ptr<Data> _my;
};

#endif

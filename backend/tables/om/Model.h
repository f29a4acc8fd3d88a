// OmModel, the output item that carries a statistical model: as PMML, or in a container.

#ifndef BACKEND_TABLES_OM_MODEL_H
#define BACKEND_TABLES_OM_MODEL_H

#include <memory>
#include <string>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/OutputPart.h"

// A container of byte strings. Setters append a chunk of any bytes, at amortised constant time per
// byte; if memory runs out, the bytes appended before remain.
class OM_API OmModel : public OmOutputPart {
 public:
  // How the model is delivered. Producers and consumers define further values.
  enum MODEL_TYPE : int { kModelDefault = 0, kModelContainer = 1 };

  explicit OmModel(const OmCellText& title);
  ~OmModel() override;

  using OmOutputPart::Accept;
  void Accept(Visitor& v) override;

  virtual void SetPMML(const char* data, unsigned int length);
  virtual void SetBinaryDataStream(const char* data, unsigned int length);
  // Each call also sets the model type to kModelContainer.
  virtual void SetPMMLContainer(const char* data, unsigned int length);
  virtual void SetStatXMLContainer(const char* data, unsigned int length);
  [[nodiscard]] const std::string& GetPMML() const;
  [[nodiscard]] const std::string& GetBinaryDataStream() const;
  [[nodiscard]] const std::string& GetPMMLContainer() const;
  [[nodiscard]] const std::string& GetStatXMLContainer() const;

  // Is 0 at first.
  void SetModelType(MODEL_TYPE type);
  [[nodiscard]] MODEL_TYPE GetModelType() const;

 private:
  struct Data;

  std::unique_ptr<Data> _my;
};

#endif

#include "InitialLastChange.h"

#include <memory>
#include <new>

#include "marlo/LastChange.h"

std::string HOST_WithTransportState(const std::string& document, const std::string& transportState) {
  std::unique_ptr<marlo::LastChange> lastChange(new (std::nothrow) marlo::LastChange());
  if (lastChange == nullptr || lastChange->SetXMLText(document.c_str()) != 0 ||
      lastChange->SetStateVariable(0, "TransportState", transportState.c_str(), nullptr) != 0)
    return document;
  const char* text = lastChange->GetXMLText();
  return text != nullptr ? text : document;
}

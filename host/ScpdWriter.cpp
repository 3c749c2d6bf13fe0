#include "host/ScpdWriter.h"

#include "host/XmlWriter.h"

namespace {

void WriteAction(HOST_XmlWriter& writer, const HOST_Action& action) {
  writer.Start("action");
  writer.Element("name", action.name);
  if (!action.arguments.empty()) {
    writer.Start("argumentList");
    for (const HOST_Argument& argument : action.arguments) {
      writer.Start("argument");
      writer.Element("name", argument.name);
      writer.Element("direction", argument.out ? "out" : "in");
      writer.Element("relatedStateVariable", argument.relatedStateVariable);
      writer.End();
    }
    writer.End();
  }
  writer.End();
}

void WriteVariable(HOST_XmlWriter& writer, const HOST_StateVariable& variable) {
  writer.Start("stateVariable");
  writer.Attribute("sendEvents", variable.sendEvents ? "yes" : "no");
  writer.Element("name", variable.name);
  writer.Element("dataType", variable.dataType);
  if (!variable.allowedValues.empty()) {
    writer.Start("allowedValueList");
    for (const char* value : variable.allowedValues) writer.Element("allowedValue", value);
    writer.End();
  }
  if (variable.minimum != nullptr && variable.maximum != nullptr) {
    writer.Start("allowedValueRange");
    writer.Element("minimum", variable.minimum);
    writer.Element("maximum", variable.maximum);
    if (variable.step != nullptr) writer.Element("step", variable.step);
    writer.End();
  }
  writer.End();
}

}  // namespace

std::string HOST_WriteScpd(const HOST_ServiceDescription& service) {
  HOST_XmlWriter writer;
  writer.Start("scpd", "urn:schemas-upnp-org:service-1-0");
  writer.Start("specVersion");
  writer.Element("major", "1");
  writer.Element("minor", "0");
  writer.End();
  // A service without actions has no actionList at all: UPnP 1.0 allows no empty one.
  if (!service.actions.empty()) {
    writer.Start("actionList");
    for (const HOST_Action& action : service.actions) WriteAction(writer, action);
    writer.End();
  }
  writer.Start("serviceStateTable");
  for (const HOST_StateVariable& variable : service.variables) WriteVariable(writer, variable);
  writer.End();
  writer.End();
  return writer.Finish();
}

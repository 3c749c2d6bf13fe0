#include "LastChangeMerge.h"

#include <cstring>
#include <memory>
#include <new>

#include "marlo/LastChange.h"

std::string HOST_MergeLastChange(const std::string& earlier, const std::string& later) {
  std::unique_ptr<marlo::LastChange> merged(new (std::nothrow) marlo::LastChange());
  std::unique_ptr<marlo::LastChange> update(new (std::nothrow) marlo::LastChange());
  if (merged == nullptr || update == nullptr || merged->SetXMLText(earlier.c_str()) != 0 ||
      update->SetXMLText(later.c_str()) != 0)
    return later;
  for (int set = 0; update->GetVariableSet(set) != nullptr; ++set) {
    const marlo::LastChange::VariableSet* variables = update->GetVariableSet(set);
    const unsigned long instance = update->GetInstanceId(variables);
    for (int i = 0; update->GetVariableName(variables, i) != nullptr; ++i) {
      if (merged->SetStateVariable(instance, update->GetVariableName(variables, i),
                                   update->GetVariableValue(variables, i),
                                   update->GetVariableChannel(variables, i)) != 0)
        return later;
    }
  }
  const char* text = merged->GetXMLText();
  return text != nullptr ? text : later;
}

std::string HOST_LastChangeValue(const std::string& document, const char* name) {
  std::unique_ptr<marlo::LastChange> reader(new (std::nothrow) marlo::LastChange());
  if (reader == nullptr || reader->SetXMLText(document.c_str()) != 0) return "";
  for (int set = 0; reader->GetVariableSet(set) != nullptr; ++set) {
    const marlo::LastChange::VariableSet* variables = reader->GetVariableSet(set);
    if (reader->GetInstanceId(variables) != 0) continue;
    for (int i = 0; reader->GetVariableName(variables, i) != nullptr; ++i) {
      if (std::strcmp(reader->GetVariableName(variables, i), name) == 0 &&
          reader->GetVariableChannel(variables, i) == nullptr)
        return reader->GetVariableValue(variables, i);
    }
  }
  return "";
}

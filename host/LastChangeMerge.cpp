#include "LastChangeMerge.h"

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

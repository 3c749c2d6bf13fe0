// marlo::StateVariable: the answer to the host's query for one state variable's value.
#ifndef MARLO_STATE_VARIABLE_H_
#define MARLO_STATE_VARIABLE_H_

#include <cstdint>
#include <string>

namespace marlo {

class StateVariable {
 public:
  StateVariable();
  ~StateVariable();

  StateVariable(const StateVariable&) = delete;
  StateVariable& operator=(const StateVariable&) = delete;

  // Records the variable's name and value. Returns 0; kErrorInvalidArgument (-1998) for a null argument;
  // kErrorNoMemory (-1997).
  int32_t SetValue(const char* name, const char* value);

  // Null until SetValue succeeded.
  const char* GetName() const;
  const char* GetValue() const;

 private:
  bool isSet_;
  std::string name_;
  std::string value_;
};

}  // namespace marlo

#endif  // MARLO_STATE_VARIABLE_H_

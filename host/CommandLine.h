// The daemon's command-line options, as one table, and the reading of argv against it.
//
// Forms accepted: "--name VALUE", "--name=VALUE", "-n VALUE", "-nVALUE", clustered flags ("-vq"), and "--"
// to end the options. Long names are matched exactly (no abbreviations), so that adding an option never
// changes what an existing command line means.
#ifndef HOST_COMMAND_LINE_H_
#define HOST_COMMAND_LINE_H_

#include <cstddef>
#include <string>
#include <vector>

// One option. The table is the one place that names the options; the help text is built from it.
struct HOST_Option {
  const char* longName;     // "name" for --name
  char shortName;           // 'n' for -n; 0 when there is none
  const char* valueName;    // "NAME" when the option takes a value; null for a flag
  const char* key;          // the key of the same setting in the configuration file; null when none
  const char* description;  // what it does, its values and its default, for --help ('\n' between lines)
};

extern const HOST_Option HOST_kOptions[];
extern const std::size_t HOST_kOptionCount;

// One option as given, in command-line order.
struct HOST_OptionUse {
  const HOST_Option* option;
  std::string value;  // empty for a flag
};

// Reads argv[1..argc-1] into *uses. Returns true; false with a one-line *error naming the offending
// argument for an unknown option, a missing value, a value given to a flag, or an argument that is no
// option (the daemon takes none).
bool HOST_ReadCommandLine(int argc, const char* const* argv, std::vector<HOST_OptionUse>* uses,
                          std::string* error);

#endif  // HOST_COMMAND_LINE_H_

// marlo::Properties: the renderer's configuration, a set of key=value properties.
//
// Read from a file of "key=value" lines (blank lines and lines starting with '#' are skipped; blanks
// around key and value are trimmed) and/or set in code. A later setting of a key replaces the earlier one.
#ifndef MARLO_PROPERTIES_H_
#define MARLO_PROPERTIES_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "dmr_cmn/Visibility.h"

namespace marlo {

class Properties {
 public:
  Properties();
  ~Properties();

  Properties(const Properties&) = delete;
  Properties& operator=(const Properties&) = delete;

  // The value of `key`, or null when the key is not set (or `key` is null). The pointer stays valid until
  // the key is set again or the object is destroyed.
  const char* GetProperty(const char* key) const;

  // Sets `key` to `value`. Returns 0; kErrorInvalidArgument (-1998) for a null or empty key or a null
  // value; kErrorNoMemory (-1997).
  int32_t SetProperty(const char* key, const char* value);

  // Reads the properties of a file. Returns 0; kErrorInvalidArgument (-1998) for a null path or a line
  // that is neither blank, a comment, nor key=value with a non-empty key (nothing of the file is kept);
  // kErrorFailure (-1999) when the file cannot be read; kErrorNoMemory (-1997).
  int32_t LoadFile(const char* path);

  // The same for text already in memory.
  int32_t LoadText(const char* text);

  // Calls visit(key, value) for every property, in byte order of the keys. The host's side: the renderer
  // daemon hands on every key its configuration file set. Allocates nothing; the pointers are valid during
  // the call only, and `visit` must not change this object.
  void ForEach(const std::function<void(const char* key, const char* value)>& visit) const;

 private:
  using Map = std::map<std::string, std::string, std::less<>>;

  // Parses `text` into `parsed`; kErrorInvalidArgument for a malformed line.
  DMR_CMN_HIDDEN static int32_t Parse(std::string_view text, Map* parsed);
  // Moves every entry of `parsed` into values_ without allocating, so that it cannot fail half-way.
  DMR_CMN_HIDDEN void Merge(Map* parsed) noexcept;

  // std::less<> lets a lookup by C string go without building a std::string (and so without allocating).
  Map values_;
};

}  // namespace marlo

#endif  // MARLO_PROPERTIES_H_

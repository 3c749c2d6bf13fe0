// A directory of a test's own under the system's temporary directory, removed with everything in it when
// the object goes. The daemon's tests keep every file they make there, never in a home directory or /var.
#ifndef HOST_TESTS_TEMP_DIRECTORY_H_
#define HOST_TESTS_TEMP_DIRECTORY_H_

#include <string>

class TempDirectory {
 public:
  TempDirectory();
  ~TempDirectory();

  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  const std::string& path() const { return path_; }

  // path() + "/" + name.
  std::string Path(const std::string& name) const { return path_ + "/" + name; }

  // Writes `content` to the file `name` in the directory (made with its parents) and returns its path.
  std::string WriteFile(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

// The whole content of the file at `path`; "" when it cannot be read.
std::string ReadWholeFile(const std::string& path);

#endif  // HOST_TESTS_TEMP_DIRECTORY_H_

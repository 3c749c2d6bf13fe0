// The device's identity on the network: its UDN, "uuid:" + a random UUID made once per configuration and
// kept in the state directory, so that a restart is the same device to control points (which keep their
// lists, names and favourites by UDN).
//
// The file is named after the configuration: "udn-<config>[-i<interface>]-p<port>", <config> being
// "default" without a configuration file, else a hash of the file's absolute path. Two daemons started on
// one machine with the same configuration are still two devices: each holds an exclusive flock(2) on its
// file for as long as it runs, and a daemon that finds the file held takes the next slot ("...-2", "...-3",
// each with a UUID of its own). The lock goes with the process: a daemon that dies frees its slot.
//
// A file is replaced only by writing a temporary file beside it and renaming it over (never half written);
// the new file is locked before it takes the name, so that it is never there unlocked.
//
// Thread-safety: none; one object per process, used from the main thread.
#ifndef HOST_PERSISTENT_UDN_H_
#define HOST_PERSISTENT_UDN_H_

#include <cstdint>
#include <string>

class HOST_PersistentUdn {
 public:
  HOST_PersistentUdn();
  // Releases the lock (Release).
  ~HOST_PersistentUdn();

  HOST_PersistentUdn(const HOST_PersistentUdn&) = delete;
  HOST_PersistentUdn& operator=(const HOST_PersistentUdn&) = delete;

  // Finds or makes the UDN of the configuration (the absolute path of its file, empty for none; the
  // interface and port settings) in `stateDirectory`, which is created with mode 0700 (and its missing
  // parents) when missing, and holds its file locked until Release. A file that holds no UUID (empty, cut
  // short, garbage) gets a new one. A UDN held before is released first.
  // Returns 0 with GetUdn() and GetPath() set. Otherwise kErrorFailure (-1999), nothing held, and *error
  // (when not null) names the file or directory and gives the system's reason ("cannot create directory
  // '/x/state': Permission denied"): the daemon may then run with HOST_NewRandomUdn and a warning.
  int32_t Acquire(const std::string& stateDirectory, const std::string& configFile,
                  const std::string& interfaceName, uint16_t port, std::string* error);

  // Lets go of the file: another process may take this slot from now on. Safe when nothing is held.
  void Release();

  // "uuid:<UUID>"; empty when nothing is held.
  const std::string& GetUdn() const;

  // The file that holds the UDN; empty when nothing is held.
  const std::string& GetPath() const;

 private:
  // The outcome of trying one slot.
  enum class SlotOutcome { Taken, Held, Failed };

  SlotOutcome TrySlot(const std::string& path, std::string* error);
  // Writes a new UUID to a file beside `path`, locks it and renames it over `path`; on success the new
  // file's descriptor replaces descriptor_.
  bool Replace(const std::string& path, std::string* uuid, std::string* error);

  int descriptor_;
  std::string udn_;
  std::string path_;
};

// The name of the identity file of a configuration in its first slot (later slots add "-<slot>").
std::string HOST_IdentityFileName(const std::string& configFile, const std::string& interfaceName,
                                  uint16_t port);

// A fresh random UDN, "uuid:" + a version-4 UUID, for a run that cannot keep one. Returns false (and
// leaves *udn as it was) when the system has no randomness to give.
bool HOST_NewRandomUdn(std::string* udn);

#endif  // HOST_PERSISTENT_UDN_H_

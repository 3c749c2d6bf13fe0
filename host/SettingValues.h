// The checks and conversions of the daemon's setting values, shared by the configuration file and the
// command line so that both accept exactly the same values.
//
// Each returns true, with the converted value where there is one; or false with *problem completing a
// sentence that starts with the value ("is not a port number (0 to 65535)").
#ifndef HOST_SETTING_VALUES_H_
#define HOST_SETTING_VALUES_H_

#include <cstdint>
#include <string>
#include <vector>

enum class HOST_AudioOutput;
enum class HOST_PublishedServices;

// Decimal digits only, 0 to 65535.
bool HOST_ParsePort(const std::string& text, uint16_t* port, std::string* problem);

// "auto", "alsa", "pulse", "wav" or "null", exactly.
bool HOST_ParseAudioOutput(const std::string& text, HOST_AudioOutput* output, std::string* problem);

// A name people read (the friendly name, the product's room and name): any UTF-8 text but the empty one.
bool HOST_CheckName(const std::string& text, std::string* problem);

// "both", "av" or "openhome", exactly.
bool HOST_ParsePublishedServices(const std::string& text, HOST_PublishedServices* published,
                                 std::string* problem);

// A volume in percent: decimal digits only, 0 to 100.
bool HOST_ParseVolume(const std::string& text, unsigned* volume, std::string* problem);

// A Linux interface name: at most 15 bytes, no '/' and no blank. Empty is allowed (every interface).
bool HOST_CheckInterfaceName(const std::string& text, std::string* problem);

// One protocol-info entry, as the service objects will parse it (marlo::ProtocolInfo::Set).
bool HOST_CheckProtocolEntry(const std::string& text, std::string* problem);

// A comma-separated list of 1 to 100 protocol-info entries, blanks around each ignored, into *entries.
bool HOST_SplitProtocolList(const std::string& list, std::vector<std::string>* entries, std::string* problem);

// The most protocol-info entries the service objects read (keys _0 to _99).
constexpr int HOST_kMaxProtocolEntries = 100;

// What a configuration key is with respect to the protocol-info entries.
enum class HOST_ProtocolKey {
  None,       // not "sinkctss.protocolInfo_..." at all
  Entry,      // "sinkctss.protocolInfo_<n>", n from 0 to 99 written without leading zeros: *number is n
  Malformed,  // "sinkctss.protocolInfo_" followed by anything else (a number past 99, "01", "x")
};
HOST_ProtocolKey HOST_ClassifyProtocolKey(const std::string& key, int* number);

// "sinkctss.protocolInfo_<number>".
std::string HOST_ProtocolKeyName(int number);

#endif  // HOST_SETTING_VALUES_H_

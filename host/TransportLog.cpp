#include "TransportLog.h"

#include <cstring>

#include "Log.h"

void HOST_TransportLog::NotifyTransportState(const char* value) {
  HOST_Log(HOST_LogLevel::Info, "transport: %s", value != nullptr ? value : "");
}

void HOST_TransportLog::NotifyTransportStatus(const char* value) {
  if (value != nullptr && std::strcmp(value, "ERROR_OCCURRED") == 0)
    HOST_Log(HOST_LogLevel::Warning, "the stream could not be played (TransportStatus ERROR_OCCURRED)");
}

void HOST_TransportLog::NotifyCurrentTrackURI(const char* value) {
  if (value != nullptr && value[0] != '\0') HOST_Log(HOST_LogLevel::Info, "track: %s", value);
}

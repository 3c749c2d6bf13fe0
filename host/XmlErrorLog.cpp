#include "XmlErrorLog.h"

#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstdio>
#include <string>

#include "Log.h"

namespace {

// libxml2 hands a message over in pieces; a line is logged once its end has come.
thread_local std::string pending;

void Collect(void*, const char* format, ...) {
  char piece[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(piece, sizeof piece, format, arguments);
  va_end(arguments);
  pending += piece;
  std::string::size_type end;
  while ((end = pending.find('\n')) != std::string::npos) {
    if (end > 0) HOST_Log(HOST_LogLevel::Debug, "xml: %s", pending.substr(0, end).c_str());
    pending.erase(0, end + 1);
  }
}

}  // namespace

void HOST_RouteXmlErrorsToLog() { xmlSetGenericErrorFunc(nullptr, Collect); }

// scpd_writer <directory>: writes the SCPD of every service of the catalogue into <directory>, as
// <Name>.xml, creating the directory when needed. The build runs it to make the document root's scpd/
// folder. Exit status 0, or 1 after a message on standard error.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "host/ScpdWriter.h"
#include "host/ServiceCatalogue.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <directory>\n", argv[0]);
    return 1;
  }
  const std::filesystem::path directory(argv[1]);
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error) {
    std::fprintf(stderr, "scpd_writer: cannot create %s: %s\n", argv[1], error.message().c_str());
    return 1;
  }
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    const std::string document = HOST_WriteScpd(service);
    const std::filesystem::path file = directory / (std::string(service.name) + ".xml");
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << document;
    out.close();
    if (document.empty() || !out) {
      std::fprintf(stderr, "scpd_writer: cannot write %s\n", file.c_str());
      return 1;
    }
  }
  return 0;
}

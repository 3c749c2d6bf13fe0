// man_page_writer TEMPLATE OUTPUT: writes the man page of open-renderer from its template, the OPTIONS
// section filled in from the daemon's option table. Runs at build time.
#include <cstdio>
#include <fstream>
#include <sstream>

#include "ManPage.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: man_page_writer TEMPLATE OUTPUT\n");
    return 2;
  }
  std::ifstream in(argv[1]);
  std::stringstream page;
  page << in.rdbuf();
  if (!in) {
    std::fprintf(stderr, "man_page_writer: cannot read %s\n", argv[1]);
    return 1;
  }
  std::ofstream out(argv[2], std::ios::trunc);
  out << DOCS_FillManPage(page.str());
  out.close();
  if (!out) {
    std::fprintf(stderr, "man_page_writer: cannot write %s\n", argv[2]);
    return 1;
  }
  return 0;
}

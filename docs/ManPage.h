// The man page of open-renderer, its OPTIONS section written from the daemon's option table (the table that
// --help is built from), so that the page and --help never name different options.
#ifndef DOCS_MAN_PAGE_H_
#define DOCS_MAN_PAGE_H_

#include <string>

// `text` as roff body text: a backslash becomes "\e", a hyphen "\-" (so that options copy and paste and
// search as typed), and a line that would start with '.' or '\'' is guarded with "\&" so that it is never
// read as a request.
std::string DOCS_RoffText(const std::string& text);

// The OPTIONS section's entries: one ".TP" paragraph per option of HOST_kOptions, in table order, with its
// short and long forms, its value, its configuration key and its description, whose "default:" line
// starts a line of its own.
std::string DOCS_OptionEntries();

// The line of the template that the option entries replace: a roff comment, so that the template stays a
// valid page, and free of '@', so that CMake's configure_file leaves it alone.
extern const char DOCS_kOptionsPlaceholder[];

// `page` with each line that is exactly DOCS_kOptionsPlaceholder replaced by DOCS_OptionEntries().
std::string DOCS_FillManPage(const std::string& page);

#endif  // DOCS_MAN_PAGE_H_

// The man page: written from the option table that --help is built from, so that it names every option
// with its key, and the built page has every section a reader looks for.
#include <gtest/gtest.h>

#include <string>

#include "CommandLine.h"
#include "ManPage.h"
#include "TempDirectory.h"

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(ManPageRoffText, EscapesHyphensAndBackslashes) {
  EXPECT_EQ(DOCS_RoffText("--mixer-device"), "\\-\\-mixer\\-device");
  EXPECT_EQ(DOCS_RoffText("a\\b"), "a\\eb");
  EXPECT_EQ(DOCS_RoffText("plain text"), "plain text");
}

TEST(ManPageRoffText, GuardsALineThatWouldReadAsARequest) {
  EXPECT_EQ(DOCS_RoffText(".local"), "\\&.local");
  EXPECT_EQ(DOCS_RoffText("x\n'quoted"), "x\n\\&'quoted");
  EXPECT_EQ(DOCS_RoffText("~/.local/state"), "~/.local/state");
}

TEST(ManPageOptions, NamesEveryOptionOfTheTableWithItsKey) {
  const std::string entries = DOCS_OptionEntries();
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    const HOST_Option& option = HOST_kOptions[i];
    EXPECT_TRUE(Contains(entries, "\\fB\\-\\-" + DOCS_RoffText(option.longName) + "\\fR")) << option.longName;
    if (option.shortName != 0) {
      EXPECT_TRUE(Contains(entries, std::string("\\fB\\-") + option.shortName + "\\fR, ")) << option.longName;
    }
    if (option.key != nullptr) {
      EXPECT_TRUE(Contains(entries, "[\\fB" + DOCS_RoffText(option.key) + "\\fR]")) << option.longName;
    }
  }
  EXPECT_EQ(entries.rfind(".TP\n", 0), 0u);
}

TEST(ManPageOptions, PutsEachDefaultOnALineOfItsOwn) {
  const std::string entries = DOCS_OptionEntries();
  EXPECT_TRUE(Contains(entries, ".br\ndefault: 0, any free port\n")) << entries;
  EXPECT_FALSE(Contains(entries, "\n.br\n.br\n"));
}

TEST(ManPageFill, ReplacesOnlyThePlaceholderLine) {
  const std::string page = std::string(".SH OPTIONS\n") + DOCS_kOptionsPlaceholder + "\n.SH FILES\n";
  const std::string filled = DOCS_FillManPage(page);
  EXPECT_EQ(filled, ".SH OPTIONS\n" + DOCS_OptionEntries() + ".SH FILES\n");
  EXPECT_EQ(DOCS_FillManPage(".SH NAME\nx \\- y\n"), ".SH NAME\nx \\- y\n");
}

TEST(ManPageBuilt, HasEverySectionAndNoPlaceholderLeft) {
  const std::string page = ReadWholeFile(DMR_BUILT_MAN_PAGE);
  ASSERT_FALSE(page.empty()) << DMR_BUILT_MAN_PAGE;
  for (const char* section :
       {"NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "NAME AND NETWORK", "AUDIO OUTPUT AND MIXER",
        "SERVICES, ROOM AND PRODUCT NAME", "PROTOCOL LIST", "DOCUMENT ROOT", "STATE DIRECTORY", "FILES",
        "LOGGING", "SIGNALS", "EXIT STATUS", "EXAMPLES"}) {
    EXPECT_TRUE(Contains(page, std::string("\n.SH ") + section + "\n")) << section;
  }
  EXPECT_FALSE(Contains(page, "@")) << "a path or version left unfilled";
  EXPECT_FALSE(Contains(page, DOCS_kOptionsPlaceholder));
  EXPECT_TRUE(Contains(page, "\\fB\\-\\-protocol\\-info\\fR"));
}

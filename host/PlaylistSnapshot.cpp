#include "PlaylistSnapshot.h"

#include <glib.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

#include "PlaylistAction.h"

namespace {

constexpr char kEntryOpening[] = "<TrackList><Entry><Id>";
constexpr char kBetweenIdAndUri[] = "</Id><Uri>";
constexpr char kBetweenUriAndMetadata[] = "</Uri><Metadata>";
constexpr char kEntryClosing[] = "</Metadata></Entry></TrackList>";

bool StartsWith(const std::string& text, const std::string& prefix) { return text.compare(0, prefix.size(), prefix) == 0; }

bool EndsWith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The text of escaped XML character data: parsed as the content of an element, with no entities other than
// the predefined ones and no markup allowed.
bool UnescapeText(const std::string& escaped, std::string* text) {
  const std::string document = "<m>" + escaped + "</m>";
  std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
      xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, "UTF-8", XML_PARSE_NONET),
      xmlFreeDoc);
  if (doc == nullptr) return false;
  const xmlNode* root = xmlDocGetRootElement(doc.get());
  text->clear();
  for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
    if (child->type != XML_TEXT_NODE) return false;
    *text += reinterpret_cast<const char*>(child->content);
  }
  return true;
}

bool ReadFlag(marlo::SinkContentTransferSubsystem* openHome, const char* action, bool* flag, std::string* error) {
  HOST_Arguments out;
  if (!HOST_PerformPlaylistAction(openHome, action, {}, &out, error)) return false;
  const std::string* value = HOST_FindArgument(out, "Value");
  if (value == nullptr || (*value != "true" && *value != "false")) {
    *error = std::string(action) + " answered no \"true\" or \"false\"";
    return false;
  }
  *flag = *value == "true";
  return true;
}

}  // namespace

bool HOST_DecodeIdArray(const std::string& text, std::vector<uint32_t>* ids) {
  ids->clear();
  if (text.empty()) return true;
  gsize length = 0;
  std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(text.c_str(), &length), g_free);
  if (bytes == nullptr || length % 4 != 0) return false;
  // g_base64_decode skips what is not of the alphabet; encoding back and comparing makes it strict.
  std::unique_ptr<gchar, decltype(&g_free)> again(g_base64_encode(bytes.get(), length), g_free);
  if (again == nullptr || text != again.get()) return false;
  for (gsize i = 0; i < length; i += 4)
    ids->push_back(static_cast<uint32_t>(bytes.get()[i]) << 24 | static_cast<uint32_t>(bytes.get()[i + 1]) << 16 |
                   static_cast<uint32_t>(bytes.get()[i + 2]) << 8 | static_cast<uint32_t>(bytes.get()[i + 3]));
  return true;
}

bool HOST_ReadSingleTrackList(const std::string& text, uint32_t id, HOST_SavedTrack* track) {
  const std::string opening = kEntryOpening + std::to_string(id) + kBetweenIdAndUri;
  if (!StartsWith(text, opening) || !EndsWith(text, kEntryClosing)) return false;
  const std::size_t end = text.size() - (sizeof(kEntryClosing) - 1);
  if (end < opening.size()) return false;
  const std::string middle = text.substr(opening.size(), end - opening.size());
  // The metadata is escaped and so holds no '<': the last separator is the real one, whatever the URI holds.
  const std::size_t separator = middle.rfind(kBetweenUriAndMetadata);
  if (separator == std::string::npos) return false;
  track->uri = middle.substr(0, separator);
  return UnescapeText(middle.substr(separator + sizeof(kBetweenUriAndMetadata) - 1), &track->metadata);
}

bool HOST_TakePlaylistSnapshot(marlo::SinkContentTransferSubsystem* openHome, HOST_SavedPlaylist* playlist,
                               std::string* error) {
  HOST_SavedPlaylist taken;
  HOST_Arguments out;
  if (!HOST_PerformPlaylistAction(openHome, "IdArray", {}, &out, error)) return false;
  const std::string* array = HOST_FindArgument(out, "Array");
  std::vector<uint32_t> ids;
  if (array == nullptr || !HOST_DecodeIdArray(*array, &ids)) {
    *error = "IdArray answered no array of ids";
    return false;
  }
  taken.tracks.reserve(ids.size());
  // One id a request: with several, a URI holding the text of the frame could not be told from the frame.
  for (const uint32_t id : ids) {
    if (!HOST_PerformPlaylistAction(openHome, "ReadList", {{"IdList", std::to_string(id)}}, &out, error))
      return false;
    const std::string* list = HOST_FindArgument(out, "TrackList");
    HOST_SavedTrack track;
    if (list == nullptr || !HOST_ReadSingleTrackList(*list, id, &track)) {
      *error = "ReadList of id " + std::to_string(id) + " answered no track list of that track";
      return false;
    }
    taken.tracks.push_back(std::move(track));
  }
  if (!ReadFlag(openHome, "Repeat", &taken.repeat, error) || !ReadFlag(openHome, "Shuffle", &taken.shuffle, error))
    return false;
  *playlist = std::move(taken);
  return true;
}

#include "PlaylistFile.h"

#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "XmlWriter.h"

namespace {

constexpr char kVersion[] = "1";

bool IsName(const xmlNode* node, const char* name) {
  return xmlStrcmp(node->name, reinterpret_cast<const xmlChar*>(name)) == 0;
}

bool IsBlank(const xmlNode* node) {
  return node->type == XML_TEXT_NODE && xmlIsBlankNode(node) != 0;
}

// The element children of `parent`, refusing anything but elements and blanks between them.
bool Elements(const xmlNode* parent, std::vector<const xmlNode*>* elements) {
  elements->clear();
  for (const xmlNode* child = parent->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      elements->push_back(child);
    } else if (!IsBlank(child)) {
      return false;
    }
  }
  return true;
}

// The text of an element that holds text only (none is the empty text).
bool TextOf(const xmlNode* element, std::string* text) {
  if (element->properties != nullptr) return false;
  text->clear();
  for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
    if (child->type != XML_TEXT_NODE) return false;
    *text += reinterpret_cast<const char*>(child->content);
  }
  return true;
}

bool ReadFlag(const xmlAttr* attribute, bool* flag) {
  if (attribute->children == nullptr || attribute->children->next != nullptr ||
      attribute->children->type != XML_TEXT_NODE)
    return false;
  const char* value = reinterpret_cast<const char*>(attribute->children->content);
  if (std::strcmp(value, "true") != 0 && std::strcmp(value, "false") != 0) return false;
  *flag = std::strcmp(value, "true") == 0;
  return true;
}

bool ReadRoot(const xmlNode* root, HOST_SavedPlaylist* playlist, std::string* error) {
  if (root == nullptr || !IsName(root, "Playlist") || root->ns != nullptr) {
    *error = "the root element is not Playlist";
    return false;
  }
  bool version = false, repeat = false, shuffle = false;
  for (const xmlAttr* attribute = root->properties; attribute != nullptr; attribute = attribute->next) {
    const char* name = reinterpret_cast<const char*>(attribute->name);
    bool ok = false;
    if (std::strcmp(name, "version") == 0 && !version) {
      ok = version = attribute->children != nullptr && attribute->children->next == nullptr &&
                     xmlStrcmp(attribute->children->content, reinterpret_cast<const xmlChar*>(kVersion)) == 0;
    } else if (std::strcmp(name, "repeat") == 0 && !repeat) {
      ok = repeat = ReadFlag(attribute, &playlist->repeat);
    } else if (std::strcmp(name, "shuffle") == 0 && !shuffle) {
      ok = shuffle = ReadFlag(attribute, &playlist->shuffle);
    }
    if (!ok) {
      *error = std::string("the Playlist attribute ") + name + " is unknown or not valid";
      return false;
    }
  }
  if (!version || !repeat || !shuffle) {
    *error = "the Playlist element lacks version=\"1\", repeat or shuffle";
    return false;
  }
  std::vector<const xmlNode*> tracks;
  if (!Elements(root, &tracks)) {
    *error = "the Playlist element holds text or other nodes beside its tracks";
    return false;
  }
  if (tracks.size() > kMaxSavedTracks) {
    *error = "more than " + std::to_string(kMaxSavedTracks) + " tracks";
    return false;
  }
  std::vector<const xmlNode*> parts;
  for (const xmlNode* track : tracks) {
    HOST_SavedTrack saved;
    if (!IsName(track, "Track") || track->properties != nullptr || !Elements(track, &parts) || parts.size() != 2 ||
        !IsName(parts[0], "Uri") || !IsName(parts[1], "Metadata") || !TextOf(parts[0], &saved.uri) ||
        !TextOf(parts[1], &saved.metadata) || saved.uri.empty()) {
      *error = "track " + std::to_string(playlist->tracks.size() + 1) + " is not a Track of a Uri and a Metadata";
      return false;
    }
    playlist->tracks.push_back(std::move(saved));
  }
  return true;
}

}  // namespace

std::string HOST_WritePlaylistText(const HOST_SavedPlaylist& playlist) {
  HOST_XmlWriter writer;
  writer.Start("Playlist");
  writer.Attribute("version", kVersion);
  writer.Attribute("repeat", playlist.repeat ? "true" : "false");
  writer.Attribute("shuffle", playlist.shuffle ? "true" : "false");
  for (const HOST_SavedTrack& track : playlist.tracks) {
    writer.Start("Track");
    writer.Element("Uri", track.uri);
    writer.Element("Metadata", track.metadata);
    writer.End();
  }
  writer.End();
  return writer.Finish();
}

bool HOST_ReadPlaylistText(const std::string& text, HOST_SavedPlaylist* playlist, std::string* error) {
  if (text.empty()) {
    *error = "the file is empty";
    return false;
  }
  if (text.size() > kMaxPlaylistFileBytes) {
    *error = "the file is larger than " + std::to_string(kMaxPlaylistFileBytes) + " bytes";
    return false;
  }
  // No entity substitution, no DTD loading, no network: the file may hold anything.
  std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET), xmlFreeDoc);
  if (doc == nullptr) {
    const xmlError* failure = xmlGetLastError();
    *error = std::string("not well-formed XML") +
             (failure != nullptr && failure->message != nullptr ? std::string(": ") + failure->message : "");
    while (!error->empty() && error->back() == '\n') error->pop_back();
    return false;
  }
  if (doc->intSubset != nullptr || doc->extSubset != nullptr) {
    *error = "the file has a document type declaration";
    return false;
  }
  HOST_SavedPlaylist read;
  if (!ReadRoot(xmlDocGetRootElement(doc.get()), &read, error)) return false;
  *playlist = std::move(read);
  return true;
}

HOST_PlaylistFileStatus HOST_ReadPlaylistFile(const std::string& path, HOST_SavedPlaylist* playlist,
                                              std::string* error) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    if (errno == ENOENT) return HOST_PlaylistFileStatus::Missing;
    *error = std::string("cannot open it: ") + std::strerror(errno);
    return HOST_PlaylistFileStatus::Refused;
  }
  std::string text;
  struct stat status;
  bool ok = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  if (!ok) {
    *error = "it is not a regular file";
  } else if (static_cast<unsigned long long>(status.st_size) > kMaxPlaylistFileBytes) {
    *error = "the file is larger than " + std::to_string(kMaxPlaylistFileBytes) + " bytes";
    ok = false;
  } else {
    // One byte more than its size is asked for, so that a file that grew since fstat is still bounded and
    // caught by the size check of the reader.
    text.resize(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t length = 0;
    while (length < text.size()) {
      const ssize_t count = ::read(descriptor, &text[length], text.size() - length);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) {
        *error = std::string("cannot read it: ") + std::strerror(errno);
        ok = false;
      }
      if (count <= 0) break;
      length += static_cast<std::size_t>(count);
    }
    text.resize(length);
  }
  ::close(descriptor);
  if (!ok || !HOST_ReadPlaylistText(text, playlist, error)) return HOST_PlaylistFileStatus::Refused;
  return HOST_PlaylistFileStatus::Read;
}

bool HOST_SetPlaylistFileAside(const std::string& path, std::string* error) {
  const std::string aside = path + ".bad";
  if (std::rename(path.c_str(), aside.c_str()) != 0) {
    *error = "cannot rename '" + path + "' to '" + aside + "': " + std::strerror(errno);
    return false;
  }
  return true;
}

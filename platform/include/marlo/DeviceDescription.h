// marlo::DeviceDescription: a UPnP device description document loaded from a file.
//
// Load the file, take the root device (the first <device> child of <root>), and find elements by name
// below it:
//
//   marlo::DeviceDescription description;
//   description.LoadDescription("/srv/renderer/openhome.xml");
//   const marlo::DeviceDescription::Node* device = description.GetRootDevice();
//   const char* name = description.GetElementValue(description.GetNode(device, "manufacturer", 0));
//
// Every lookup accepts a null node and answers null (GetNode) or "" (GetElementValue), so a chain of
// lookups on a missing file or element yields "" without checks in between.
#ifndef MARLO_DEVICE_DESCRIPTION_H_
#define MARLO_DEVICE_DESCRIPTION_H_

#include <cstdint>
#include <string>

namespace marlo {

class DeviceDescription {
 public:
  // An element of the loaded document (opaque); valid until the next LoadDescription or destruction.
  struct Node;

  DeviceDescription();
  ~DeviceDescription();

  DeviceDescription(const DeviceDescription&) = delete;
  DeviceDescription& operator=(const DeviceDescription&) = delete;

  // Loads and parses the XML file at `path`, replacing any earlier document. No network access, no
  // external entities. Returns 0; kErrorInvalidArgument (-1998) for a null path or a file that is not
  // well-formed XML; kErrorFailure (-1999) when the file cannot be read; kErrorNoMemory (-1997).
  int32_t LoadDescription(const char* path);

  // The first <device> element directly below the document's root element, or null when nothing is
  // loaded or the root has no device.
  const Node* GetRootDevice() const;

  // The index-th (from 0) element whose local name is `name` among the descendants of `parent`, in
  // document order; null when there is none or `parent` or `name` is null.
  const Node* GetNode(const Node* parent, const char* name, int index) const;

  // The text content of `node` (entities decoded, surrounding blanks kept), "" for a null node or an
  // element without text. Valid until the next call of GetElementValue or LoadDescription.
  const char* GetElementValue(const Node* node) const;

 private:
  void* document_;  // the parsed document (libxml2's xmlDoc)
  mutable std::string value_;
};

}  // namespace marlo

#endif  // MARLO_DEVICE_DESCRIPTION_H_

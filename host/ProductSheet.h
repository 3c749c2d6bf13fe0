// The product sheet handed to the OpenHome service object: the shipped openhome.xml of the document root
// with the room and the name this renderer is configured with, so that OpenHome control points (which
// list renderers by room, not by friendly name) show what the person running it chose.
//
// The OpenHome object reads the sheet from a directory it is given at start-up; the daemon writes the
// result into its state directory and gives it that directory. The document root itself stays as
// shipped (it may be read-only, and other renderers may share it).
#ifndef HOST_PRODUCT_SHEET_H_
#define HOST_PRODUCT_SHEET_H_

#include <string>

struct HOST_ProductNames {
  std::string room;  // the text of ProductRoom; never left as the sheet has it
  std::string name;  // the text of ProductName; empty: the sheet's own
};

// `sheet` (the text of an openhome.xml) with the first element named ProductRoom below its root device
// holding names.room, and likewise ProductName (when names.name is not empty); an element the sheet lacks
// is added at the end of the root device. Every other byte of meaning is kept.
// When `sheet` is not a well-formed document with a root device, the answer is a sheet holding only the
// two names, and *problem says what was wrong with the given one (it is left alone otherwise).
// "" only when libxml2 had no memory.
std::string HOST_ProductSheet(const std::string& sheet, const HOST_ProductNames& names, std::string* problem);

#endif  // HOST_PRODUCT_SHEET_H_

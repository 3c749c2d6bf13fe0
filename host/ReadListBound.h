// The bound on the size of an OpenHome ReadList answer, checked by the daemon before the service object
// builds it.
//
// ReadList answers one TrackList entry per id of its IdList, repeats included, each with the track's URI and
// metadata: a request of a few bytes per id ("1 1 1 ...", up to the 2 MiB request limit) would have the
// service object build gigabytes. The daemon therefore works out the size of the answer first, from the
// playlist's own answers (IdArray, then ReadList of each distinct id the request names, one at a time), and
// refuses a request whose answer would exceed HOST_kMaxReadListReplyBytes; every other request gets the
// service object's own answer, untouched. What the estimate costs stays small: one entry in memory at a
// time, and one query per distinct track named.
//
// Main loop only, between two actions, like every action.
#ifndef HOST_READ_LIST_BOUND_H_
#define HOST_READ_LIST_BOUND_H_

#include <cstddef>
#include <string>

namespace marlo {
class SinkContentTransferSubsystem;
}

// The largest TrackList a ReadList may answer: 8 MiB. A whole playlist of 1001 tracks with a few kilobytes
// of metadata each fits several times over.
constexpr std::size_t HOST_kMaxReadListReplyBytes = 8 * 1024 * 1024;

// False when the TrackList for `idList` would be longer than `maxBytes`; *size (when not null) then holds
// the size reached when the estimate stopped, else the whole size. True as well when the estimate cannot
// be made (a query of the playlist failed): the service object's own answer then decides. The ids are read
// as the playlist reads them: pieces between single blanks, each in decimal with its leading number only
// (no number reads 0), kept to its low 32 bits.
bool HOST_ReadListWithinBound(marlo::SinkContentTransferSubsystem* openHome, const char* idList,
                              std::size_t maxBytes, std::size_t* size);

#endif  // HOST_READ_LIST_BOUND_H_

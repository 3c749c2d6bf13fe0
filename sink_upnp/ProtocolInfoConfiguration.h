// The renderer's sink protocol list, read from configuration: the properties "sinkctss.protocolInfo_0",
// "_1", ... up to "_99", ending at the first missing number. Shared by both service objects, which keep
// the parsed entries as a chain of marlo::ProtocolInfo linked through their `next`.
#ifndef SINK_UPNP_PROTOCOL_INFO_CONFIGURATION_H_
#define SINK_UPNP_PROTOCOL_INFO_CONFIGURATION_H_

#include <cstdint>

namespace marlo {
class Properties;
class ProtocolInfo;
}  // namespace marlo

// Reads and parses the entries into a new chain stored in *chain; entries already in *chain (left by an
// earlier failed attempt) are freed first, never joined into the new list.
// Answers 0 with at least one entry; -962 when the key with number 0 is missing; -989 when an entry
// cannot be created or has no memory to parse (the chain is then cleaned); -1 for null properties, a
// malformed entry (the chain is cleaned) or another failure of the parse (the entries so far stay).
int32_t SINK_UPNP_PrepareProtocolInfo(marlo::ProtocolInfo** chain, marlo::Properties* properties);

// Joins the chain's entries with "," into a buffer from malloc, stored in *out (the caller frees it).
// Answers 0; -1 for null `out` or an empty chain, or when an entry cannot be printed; -989 when there is
// no memory (nothing is stored).
int32_t SINK_UPNP_GetProtocolInfo(const marlo::ProtocolInfo* chain, char** out);

// Deletes every entry of the chain, head first, and leaves *chain null. Safe on an empty chain.
void SINK_UPNP_CleanProtocolInfo(marlo::ProtocolInfo** chain);

#endif  // SINK_UPNP_PROTOCOL_INFO_CONFIGURATION_H_

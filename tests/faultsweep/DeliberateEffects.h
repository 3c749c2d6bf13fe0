// The lasting effects of a host failure that the renderer keeps on purpose, in one place: what each is,
// why it is kept, and which failures may leave it. A faulted run may leave one of these and nothing else:
// the sweep observes each one, checks that the failure that fired may leave it, undoes it through the
// test peers (so that the leak check of the sanitizer build sees only what nobody meant to leave), and
// then proves the object fully usable again. The sweep needs no LeakSanitizer suppression: the one
// deliberate leak below is freed by the sweep itself, like the other tests free what a deliberate
// behaviour leaves.
#ifndef TESTS_FAULTSWEEP_DELIBERATE_EFFECTS_H_
#define TESTS_FAULTSWEEP_DELIBERATE_EFFECTS_H_

#include <string>
#include <vector>

#include "FaultSweep.h"

enum class LastingEffect {
  // A store's lock stays held after a failure other than no memory inside GetStateVariable,
  // ChangeStateVariable, GetLastChange or SendEvent (an eventing thread refusing the batch), or after a
  // failed release: a store whose runtime fails stays blocked rather than half-changed. Until it is released, every store operation that takes the lock
  // answers -1 (the lock refuses a second taking on the same thread) and the store cannot be finalized.
  kStoreLockHeld,
  // An eventing thread stays in the store's field after its registration failed other than for no
  // memory or a thread that would not start, or after a failed stop, join or finalize of its
  // unregistration: a thread in an unknown state is neither torn down nor replaced. A later registration
  // of that service is refused, and the standard store refuses Finalize while it is there.
  kEventingThreadKept,
  // The service object keeps an event handler whose unregistration failed in the store: the handler is
  // forgotten only when the store has let go of its thread. A new registration of that service is
  // refused until then.
  kEventHandlerKept,
  // A pending LastChange document whose SetType failed other than with -1999 is kept as the pending
  // document, and the runtime renders no text for a document without a type; SendEvent keeps a pending
  // document it could not render (so that a passing failure of the rendering loses nothing), so every
  // later SendEvent answers -1 and AVTransport changes are no longer sent until the store is finalized.
  // Our runtime's SetType(0) fails only with -1999 (which deletes the document), so only an injected
  // fault with another code reaches this.
  kUnrenderablePendingDocument,
  // The one deliberate leak: the OpenHome store does not look at its eventing threads in Finalize (a
  // Finalize with a handler still registered succeeds), and the store's destructor does not free them, so
  // a thread kept by a failed unregistration is lost with the store.
  kEventingThreadLostWithStore,
};

// The effect's name, for messages.
const char* LastingEffectName(LastingEffect effect);

// Whether the failure `kind` may leave `effect` behind.
bool MayLeave(const FaultKind& kind, LastingEffect effect);

// Adds a test failure for every effect in `observed` that the fault of `fault` may not leave (every
// effect, when nothing was faulted), and counts each observed effect.
void ExpectOnlyDeliberateEffects(const FaultCase& fault, const std::vector<LastingEffect>& observed);

// "the store's lock held 12, ..." for the effects counted since the last reset, or "none".
std::string DescribeObservedEffects();
void ResetObservedEffects();

#endif  // TESTS_FAULTSWEEP_DELIBERATE_EFFECTS_H_

#pragma once

#include "envelope.h"

#include <mdtools/progress.h>

namespace Girder {

// Computes all positions of the solver, in parts on all processor cores or, if `sequential`, on
// one. Both give the same bits. Returns when all is done; false, and an envelope of no use, if
// `cancel` wanted it to stop, which is asked on several threads at once. `progress` gets the number
// of positions as its maximum and then how many are done; as the parts send from threads of their
// own, its window must not belong to the calling thread.
bool computeEnvelope(const EnvelopeSolver& solver, bool sequential, Tools::CancelHandler& cancel,
                     Tools::ProgressMessenger& progress, Envelope& envelope);

// What became of a run in the background.
enum class RunEnd { Done, Cancelled, NoThread };

// The same in the background, while the calling thread shows the progress with `display`; null
// shows nothing.
RunEnd computeEnvelopeInBackground(const EnvelopeSolver& solver, Tools::CancelHandler& cancel,
                                   Tools::ProgressHandler* display, Envelope& envelope);

}

#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>

#include <memory>

class SoNode;
class SoOutput;

/// Writes a graph as SoWriteAction does, in slices: a program with an event loop can save a large
/// scene while its user goes on working.
///
///     SoSlicedWrite write(root, &output);
///     while (write.run(0.005) == SoSlicedWrite::RUNNING)
///         ...; // handle events
///     output.closeFile();
///
/// Between two slices fields may get other values, of which the text then holds the one or the
/// other. When children, names or connections change the text may be of no use: cancel, and begin
/// anew. Nothing is harmed in either case: while the work is paused it holds a reference on every
/// node above the place that it has come to.
///
/// Runs in the thread that made it, under the caller's read lock. Costs what SoWriteAction costs,
/// and a copy of one long field at a time.
class KALMYR_API SoSlicedWrite {
public:
    enum State { RUNNING, DONE, FAILED };

    /// `root` is held; `out` must be open and outlive the object. In text form only.
    SoSlicedWrite(SoNode* root, SoOutput* out);
    /// Cancels.
    ~SoSlicedWrite();
    SoSlicedWrite(const SoSlicedWrite&) = delete;
    SoSlicedWrite& operator=(const SoSlicedWrite&) = delete;

    /// The children of the root become the roots of the file. Before the first run().
    void setRootWritten(bool on);
    /// Goes on for about that long: the time is looked at between nodes, and inside long fields
    /// (but not inside images).
    State run(const SbTime& duration);
    State getState() const;
    /// Ends without the rest of the text; the output counts as failed from then on, so that no file
    /// comes into being. Nothing when it is done.
    void cancel();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

#pragma once

#include <kalmyr/base/Export.h>

#include <cstdint>

/// Counts what somebody does about events of one cascade: about all that follows from one change,
/// inside the call that made it. Events that go round in a circle for ever are cut off by it.
class KALMYR_API SoCascade {
public:
    /// So often one receiver may react in a cascade.
    static constexpr int kMaxReactions = 256;

    /// Counts one more; false when it is one too many.
    bool mayReact();

private:
    std::uint64_t m_cascade = 0;
    int m_reactions = 0;
};

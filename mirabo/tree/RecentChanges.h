#pragma once

#include <vector>

class SoNode;

/// Tells a single change from a steady stream: an animation is worth a look when it begins, not
/// with every frame.
class RecentChanges {
public:
    /// A node that was quiet for so long has news again with its next change.
    static constexpr int kQuietTime = 1000; ///< milliseconds

    RecentChanges() { begin(); }

    /// Another scene: what changes from the beginning on is no news.
    void begin();
    /// A node changed. False when it did so shortly before, too.
    bool isNews(const SoNode* node);
    /// The node died; another one may have its address.
    void forget(const SoNode* node);
    /// For tests; milliseconds, 0: everything is news.
    void setQuietTime(int time) { m_quietTime = time; }

private:
    struct Entry {
        const SoNode* node; ///< only compared
        double time;        ///< seconds
    };

    std::vector<Entry> m_entries;
    int m_quietTime = kQuietTime;
    double m_begin = 0; ///< seconds
};

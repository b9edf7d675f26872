#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/core/ReadMessages.h"

#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#endif

#include <QObject>
#include <QString>

class SbString;

namespace mirabo {

/// Gets the content of inline nodes whose address the toolkit cannot read by itself: file: links
/// are read, and others named to the user, who may have to fetch them by other means.
///
/// There is one such callback in a process; while this object lives it is the tool's, and that of
/// the host is asked for what is no local file.
class InlineFetcher final : public QObject {
    Q_OBJECT

public:
    explicit InlineFetcher(QObject* parent);
    ~InlineFetcher() override;

Q_SIGNALS:
    void notFetched(const QString& url);
    /// Fetching gave messages: errors and warnings of the file that was read, or that there is
    /// none.
    void messagesPosted(const mirabo::ReadMessages& messages);

private:
    /// The callback of the host; null for none.
    template <class Inline>
    struct Before {
        typename Inline::FetchURLCallBack* callback = nullptr;
        void* data = nullptr;

        void replace(InlineFetcher* fetcher);
        void putBack(const InlineFetcher* fetcher);
    };

    template <class Inline>
    static void fetch(const SbString& url, void* data, Inline* node);
    template <class Inline>
    const Before<Inline>& before() const;

    Before<SoWWWInline> m_before;
    Before<SoVRMLInline> m_vrmlBefore;
};

} // namespace mirabo

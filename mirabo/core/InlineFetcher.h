#pragma once

#include <QObject>
#include <QString>

class SbString;

namespace mirabo {

/// Gets the content of inline nodes whose address the toolkit cannot read by itself: file: links
/// are read, and others named to the user, who may have to fetch them by other means.
///
/// There is one such callback in a process; while this object lives it is the tool's.
class InlineFetcher final : public QObject {
    Q_OBJECT

public:
    explicit InlineFetcher(QObject* parent);
    ~InlineFetcher() override;

Q_SIGNALS:
    void notFetched(const QString& url);

private:
    template <class Inline>
    static void fetch(const SbString& url, void* data, Inline* node);
};

} // namespace mirabo

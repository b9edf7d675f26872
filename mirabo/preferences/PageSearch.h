#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class QWidget;

namespace mirabo {

/// Searches the pages of a dialog for words, all of which must stand on a page: in its name or in
/// the texts of its controls, as parts of words and in either case.
class PageSearch {
public:
    /// The empty text is found on every page.
    explicit PageSearch(const QString& text = QString());

    bool isEmpty() const { return m_words.isEmpty(); }
    bool matches(const QString& name, const QWidget& page) const;
    /// Marks the controls of a page whose texts have one of the words, and no others.
    void mark(QWidget& page) const;

private:
    bool hasWord(const QString& text) const;

    QStringList m_words;
};

} // namespace mirabo

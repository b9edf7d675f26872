#pragma once

#include "mirabo/extender/MrbFieldEditor.h"

#include <QPoint>
#include <QPointer>

class ImageView;
class QComboBox;
class QFileDialog;
class QLabel;
class QSpinBox;
class QToolButton;
class SbImage;

/// The picture of an SFImage field: seen whole or in part, by channels and slices, loaded from and
/// saved to files.
class ImageWidget final : public MrbFieldWidget {
    Q_OBJECT

public:
    ImageWidget(MrbFieldEdit* edit, QWidget* parent);
    ~ImageWidget() override;

    void showValue() override;
    /// The picture can still be looked at and saved.
    void setReadOnly(bool on) override;

    /// Reads the picture of a file into the field. False, with a message in the widget, when it
    /// cannot.
    bool load(const QString& path);
    /// Writes the slice that is shown, in the format of the file's suffix; PNG without one.
    bool save(const QString& path);
    void clear();
    void chooseFileToLoad();
    void chooseFileToSave();

    ImageView* view() const { return m_view; }
    /// Returns the last error; empty for none.
    QString problemText() const;

private:
    void makeTools();
    void makeLayout();
    SbImage image() const;
    void setImage(const SbImage& image);
    void showChannels(int components);
    void showSize(const SbImage& image);
    void showPixel(QPoint pixel);
    void showZoom();
    void tell(const QString& problem);
    /// Opens a dialog that calls with the file that is chosen.
    void choose(QFileDialog* dialog, bool (ImageWidget::*use)(const QString&));

    ImageView* m_view;
    QComboBox* m_channels;
    QLabel* m_sliceLabel;
    QSpinBox* m_slice;
    QToolButton* m_fit;
    QToolButton* m_original;
    QToolButton* m_load;
    QToolButton* m_save;
    QToolButton* m_clear;
    QLabel* m_size;
    QLabel* m_pixel;
    QLabel* m_problem;
    QPointer<QFileDialog> m_dialog; // Owned by itself; it may go at any time.
    int m_components = -1;
    QString m_sizeText;
    QPoint m_shownPixel{-1, -1};
    bool m_isReadOnly = false;
};

/// Null in the compact form.
MrbFieldWidget* makeImageWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);

#pragma once

class QWidget;
struct Options;

/// Waits until the scene is loaded and drawn and the first shape is selected, and writes a picture
/// of the whole window. The exit status: 1, with the reason on stderr, when the file could not be
/// read or the picture not be written.
int takeScreenshot(QWidget& window, const Options& options);

#include "mirabo/extender/MrbPreferencePage.h"

MrbPreferencePage::MrbPreferencePage(QWidget* parent) : QWidget(parent) {}
MrbPreferencePage::~MrbPreferencePage() = default;

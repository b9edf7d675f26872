#include "OverviewSupport.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoMiraboList.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include <QCoreApplication>
#include <QSettings>
#include <QTest>

SO_NODE_SOURCE(Probe)

Probe::Probe()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(number, (1.5f));
    SO_ADD_FIELD(vector, (SbVec3f(1, 2, 3)));
    SO_ADD_EMPTY_FIELD(many);
    SO_ADD_EMPTY_FIELD(one);
    SO_ADD_EMPTY_FIELD(nodes);
    SO_ADD_EMPTY_FIELD(array);
    SO_ADD_EMPTY_FIELD(image);
    SO_ADD_EMPTY_FIELD(in);
    SO_ADD_EMPTY_FIELD(out);
    SO_ADD_EMPTY_FIELD(hidden);
    in.setFieldType(SoField::EVENT_IN);
    out.setFieldType(SoField::EVENT_OUT);
    hidden.setFieldType(SoField::INTERNAL);
}

Probe::~Probe() = default;

void Probe::initClass()
{
    if (s_classTypeId.isBad())
        SO_NODE_INIT_CLASS(Probe, SoNode, "Probe");
}

namespace {

Probe* makeProbe()
{
    SoDB::init();
    Probe::initClass();
    return new Probe;
}

} // namespace

OverviewTest::OverviewTest()
{
    qRegisterMetaType<QTreeWidgetItem*>("QTreeWidgetItem*");
    qRegisterMetaType<SoField*>("SoField*");
    qRegisterMetaType<const SoField*>("const SoField*");
    qRegisterMetaType<SoNode*>("SoNode*");
    mirabo::releaseSettings();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    m_probe = makeProbe();
}

OverviewTest::~OverviewTest()
{
    mirabo::releaseSettings();
}

void OverviewTest::show(QWidget& widget)
{
    widget.show();
    QCoreApplication::processEvents();
}

void OverviewTest::pass()
{
    SoSensorManager::processDelayQueue(true);
    QCoreApplication::processEvents();
}

SoFieldItem* OverviewTest::row(const SoMiraboList& list, const char* field)
{
    for (int i = 0; i < list.topLevelItemCount(); ++i)
        if (list.fieldItem(i)->text(SoMiraboList::FieldName) == field)
            return list.fieldItem(i);
    return nullptr;
}

QString OverviewTest::value(const SoMiraboList& list, const char* field)
{
    const SoFieldItem* item = row(list, field);
    return item ? item->text(SoMiraboList::FieldValue) : QString("no row");
}

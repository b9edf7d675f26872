#pragma once

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFInstanceParameter.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFArray.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <QMetaType>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

class QTreeWidgetItem;
class SoFieldItem;
class SoMiraboList;

Q_DECLARE_OPAQUE_POINTER(QTreeWidgetItem*)
Q_DECLARE_METATYPE(QTreeWidgetItem*)
Q_DECLARE_METATYPE(SoField*)
Q_DECLARE_METATYPE(const SoField*)
Q_DECLARE_METATYPE(SoNode*)

/// A node with a field of every kind that the lists treat apart.
class Probe : public SoNode {
    SO_NODE_HEADER(Probe)

public:
    Probe();
    static void initClass();

    SoSFFloat number;
    SoSFVec3f vector;
    SoMFFloat many;
    SoSFNode one;
    SoMFNode nodes;
    SoSFArray array;
    SoSFImage image;
    SoSFFloat in;
    SoSFFloat out;
    SoSFFloat hidden;

protected:
    ~Probe() override;
};

/// A node whose only field may go before it does, as those of nodes declared in files.
class Declared final : public Probe {
public:
    Declared() : field(new SoSFFloat)
    {
        field->setContainer(this);
        m_data.addField(this, SbName("declared"), field.get());
    }
    const SoFieldData* getFieldData() const override { return &m_data; }

    std::unique_ptr<SoSFFloat> field;

private:
    SoFieldData m_data;
};

/// A toolkit, settings of its own, and a probe.
class OverviewTest : public ::testing::Test {
protected:
    OverviewTest();
    ~OverviewTest() override;

    /// The window is on the screen from now on.
    static void show(QWidget& widget);
    /// Serves the sensors, then the event loop.
    static void pass();
    /// The row of the field of that name; null when it has none.
    static SoFieldItem* row(const SoMiraboList& list, const char* field);
    static QString value(const SoMiraboList& list, const char* field);

    QTemporaryDir m_folder;
    SoRef<Probe> m_probe;
};

/// Switches the mode in which nodes show the names they have in the network.
class NetNameScope {
public:
    explicit NetNameScope(const char* preference) : m_preference(preference)
    {
        SoPreferences::setBool(m_preference, true);
    }
    ~NetNameScope() { SoPreferences::removeValue(m_preference); }

private:
    const char* m_preference;
};

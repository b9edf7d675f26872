#include "mirabo/launch/SceneFollower.h"

#include "mirabo/extender/private/Frame.h"

#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/io/SoReadLock.h>

#include <QThread>

#include <utility>

namespace mirabo {

SceneFollower::SceneFollower(std::function<void(SoNode*)> show)
    : m_show(std::move(show)),
      m_sensor([](void* data, SoSensor*) { static_cast<SceneFollower*>(data)->changed(); }, this)
{
    m_sensor.setPriority(0);
}

SceneFollower::~SceneFollower()
{
    follow(nullptr);
}

void SceneFollower::follow(SoSceneManager* manager)
{
    const SoReadLock graph; // whoever gives the manager a scene in another thread holds the lock
    SoField* scene = manager ? &manager->getImpl()->getRootField() : nullptr;
    if (scene != m_sensor.getAttachedField())
        m_sensor.attach(scene);
}

void SceneFollower::changed()
{
    if (QThread::currentThread() == thread())
        tell();
    else
        QMetaObject::invokeMethod(
            this, [this] { tell(); }, Qt::QueuedConnection);
}

void SceneFollower::tell()
{
    const Frame frame;
    if (const SoField* scene = m_sensor.getAttachedField())
        m_show(static_cast<const SoSFNode*>(scene)->getValue());
}

} // namespace mirabo

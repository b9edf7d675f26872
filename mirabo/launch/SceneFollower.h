#pragma once

#include <kalmyr/sensors/SoFieldSensor.h>

#include <QObject>

#include <functional>

class SoNode;
class SoSceneManager;

namespace mirabo {

/// Tells when a scene manager of the host is given another scene: inside the call that gives it or,
/// when that is made in another thread, in the next pass of the event loop.
class SceneFollower final : public QObject {
public:
    /// `show` is called with the manager's scene; null: it has none. It may destroy this.
    explicit SceneFollower(std::function<void(SoNode*)> show);
    ~SceneFollower() override;

    /// Null: none. A manager that dies is forgotten.
    void follow(SoSceneManager* manager);

private:
    void changed();
    void tell();

    std::function<void(SoNode*)> m_show;
    SoFieldSensor m_sensor; ///< on the field that holds the manager's scene
};

} // namespace mirabo

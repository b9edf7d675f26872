#include "mirabo/core/Modal.h"

namespace mirabo {

namespace {

ModalBase* s_innermost = nullptr;

} // namespace

ModalBase::ModalBase() : m_outer(s_innermost)
{
    s_innermost = this;
}

ModalBase::~ModalBase()
{
    s_innermost = m_outer;
}

void ModalBase::prepare(QWidget* widget)
{
    widget->setAttribute(Qt::WA_QuitOnClose, false); // the host's loop ends with its own windows
}

void ModalBase::closeAll()
{
    for (ModalBase* open = s_innermost; open; open = open->m_outer) {
        open->m_dismissed = true;
        open->close();
    }
}

Modal<QMenu>::Modal(QWidget* parent) : m_menu(new QMenu(parent))
{
    prepare(m_menu);
}

Modal<QMenu>::~Modal()
{
    delete m_menu.data();
}

void Modal<QMenu>::run(const QPoint& globalPosition)
{
    if (!isDismissed())
        m_menu->exec(globalPosition);
}

void Modal<QMenu>::close()
{
    if (m_menu)
        m_menu->close();
}

Modal<QDrag>::Modal() : m_source(std::make_unique<QObject>()), m_drag(new QDrag(m_source.get())) {}

Modal<QDrag>::~Modal() = default;

void Modal<QDrag>::run(Qt::DropActions actions)
{
    if (!isDismissed())
        m_drag->exec(actions);
}

void Modal<QDrag>::close()
{
    QDrag::cancel();
}

} // namespace mirabo

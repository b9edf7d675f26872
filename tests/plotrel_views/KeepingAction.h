#pragma once

#include "Painter.h"
#include "VectorDrawing.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>
#include <kalmyr/plotrel/SoVectorOutput.h>

#include <string>

constexpr int kWidth = 480, kHeight = 384;
const SbColor kBackground(0.25f, 0.3f, 0.35f);

/// Keeps the drawing instead of writing it.
class KeptOutput final : public SoVectorOutput {
public:
    explicit KeptOutput(const Abilities& abilities) : m_abilities(abilities) {}
    Abilities getAbilities() const override { return m_abilities; }
    kalmyr::detail::VectorDrawing drawing;

private:
    void write(const kalmyr::detail::VectorDrawing& drawn, kalmyr::detail::ByteWriter&) override
    {
        drawing = drawn;
    }
    Abilities m_abilities;
};

constexpr SoVectorOutput::Abilities kAllAbilities{true, true, true, true};

class KeepingAction final : public SoVectorizeAction {
public:
    explicit KeepingAction(const SoVectorOutput::Abilities& abilities = kAllAbilities)
        : SoVectorizeAction(new KeptOutput(abilities))
    {
        setViewportRegion(SbViewportRegion(kWidth, kHeight));
        setBackgroundColor(kBackground);
        getVectorOutput()->setMinLineWidth(0);
        getVectorOutput()->openFile("/dev/null");
    }
    const kalmyr::detail::VectorDrawing& getDrawing() const
    {
        return static_cast<KeptOutput*>(getVectorOutput())->drawing;
    }
    Picture paint() const { return Painter(getDrawing(), kWidth, kHeight).paint(); }
};

inline SoRef<SoNode> readScene(const std::string& text)
{
    SoInput in;
    in.setBuffer(text.data(), text.size());
    return SoRef<SoNode>(SoDB::readAll(&in));
}

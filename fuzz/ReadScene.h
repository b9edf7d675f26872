#pragma once

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoReadError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoToVRML2Action.h>
#include <kalmyr/io/SoToVRMLAction.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoSeparator.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

/// What every fuzzer of scene files does with its bytes; the tests do the same with the corpus.
namespace fuzz {

inline void silence()
{
    static const bool done = [] {
        SoDB::init();
        const auto nothing = [](const SoError*, void*) {};
        SoError::setHandlerCallback(nothing);
        SoReadError::setHandlerCallback(nothing);
        SoDebugError::setHandlerCallback(nothing);
        return true;
    }();
    static_cast<void>(done);
}

inline SoRef<SoNode> read(std::string_view bytes)
{
    SoInput in;
    if (!in.setBuffer(bytes.data(), bytes.size()))
        return nullptr;
    return SoRef<SoNode>(SoDB::readAll(&in));
}

inline std::string write(SoNode* node, bool binary)
{
    SoOutput out;
    out.setBinary(binary);
    out.setBuffer();
    SoWriteAction action(&out);
    action.apply(node);
    out.closeFile();
    return std::string(out.getText());
}

/// Makes the geometry of a scene, and scenes of other formats of it.
inline void use(SoNode* scene)
{
    SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
    bounds.apply(scene);
    SoGetPrimitiveCountAction count;
    count.apply(scene);
    SoToVRMLAction toVrml1;
    toVrml1.apply(scene);
    SoToVRML2Action toVrml2;
    toVrml2.apply(scene);
}

/// Reads; what could be read is measured, converted, written, read and written again, as text and
/// in binary form. False when the writings differ.
inline bool roundTrip(std::string_view bytes)
{
    const SoRef<SoNode> scene = read(bytes);
    if (!scene)
        return true;
    use(scene.get());
    const std::string once = write(scene.get(), false);
    const SoRef<SoNode> again = read(once);
    const SoRef<SoNode> fromBinary = read(write(scene.get(), true));
    return again && fromBinary && write(again.get(), false) == once
           && write(fromBinary.get(), false) == once;
}

/// For libFuzzer: a header of the format, then the bytes.
inline int run(std::string_view header, const std::uint8_t* data, std::size_t size)
{
    silence();
    std::string bytes(header);
    bytes.append(reinterpret_cast<const char*>(data), size);
    if (!roundTrip(bytes))
        std::abort();
    return 0;
}

} // namespace fuzz

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
#include <kalmyr/vrml/SoVRMLGroup.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

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

inline std::string write(SoNode* node, bool binary, const char* header = nullptr)
{
    SoOutput out;
    out.setBinary(binary);
    if (header)
        out.setHeaderString(header);
    out.setBuffer();
    SoWriteAction action(&out);
    action.apply(node);
    out.closeFile();
    return std::string(out.getText());
}

/// Reads from a file that is mapped, and from a pipe that gives a few bytes at a time.
inline SoRef<SoNode> readFrom(int file)
{
    SoInput in;
    const std::string name = "/dev/fd/" + std::to_string(file);
    SoNode* scene = in.openFile(SbString(name)) ? SoDB::readAll(&in) : nullptr;
    close(file);
    return SoRef<SoNode>(scene);
}

inline SoRef<SoNode> readFromFile(std::string_view bytes)
{
    const int file = memfd_create("scene", MFD_CLOEXEC);
    if (::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        std::abort();
    return readFrom(file);
}

inline SoRef<SoNode> readFromPipe(std::string_view bytes)
{
    constexpr std::size_t kPieces = 200; // no more than the pipe holds
    int ends[2] = {};
    if (pipe2(ends, O_CLOEXEC | O_DIRECT) != 0 || fcntl(ends[0], F_SETPIPE_SZ, 1 << 20) < 0)
        std::abort();
    const std::size_t step = bytes.size() / kPieces + 1;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        const std::string_view piece = bytes.substr(at, step);
        if (::write(ends[1], piece.data(), piece.size()) != static_cast<ssize_t>(piece.size()))
            std::abort();
    }
    close(ends[1]);
    return readFrom(ends[0]);
}

/// Makes the geometry of a scene; the number of its triangles.
inline std::uint64_t use(SoNode* scene)
{
    SoGetBoundingBoxAction bounds{SbViewportRegion(100, 100)};
    bounds.apply(scene);
    SoGetPrimitiveCountAction count;
    count.apply(scene);
    return count.getTriangleCount();
}

/// A scene of another format, made of one, must come back from its text as it was.
inline const char* tryConverted(SoNode* scene, const char* header)
{
    if (!scene) // too large to be converted
        return nullptr;
    const std::string once = write(scene, false, header);
    const SoRef<SoNode> again = read(once);
    if (!again)
        return "a converted scene cannot be read";
    return use(again.get()) == use(scene) ? nullptr
                                          : "a converted scene has other triangles when read";
}

/// Reads bytes in all ways; what could be read is measured, converted, written, read and written
/// again, as text and in binary form. What two of the ways disagree about, or null.
inline const char* findDisagreement(std::string_view bytes)
{
    const SoRef<SoNode> scene = read(bytes);
    const SoRef<SoNode> fromFile = readFromFile(bytes);
    const SoRef<SoNode> fromPipe = readFromPipe(bytes);
    if (!scene != !fromFile || !scene != !fromPipe)
        return "only one of memory, file and pipe can be read";
    if (!scene)
        return nullptr;
    const std::string once = write(scene.get(), false);
    for (const SoRef<SoNode>& other : {fromFile, fromPipe, read(bytes)})
        if (write(other.get(), false) != once)
            return "two readings differ";
    const SoRef<SoNode> again = read(once);
    const SoRef<SoNode> fromBinary = read(write(scene.get(), true));
    if (!again || !fromBinary)
        return "what was written cannot be read";
    if (write(again.get(), false) != once)
        return "the text differs when it is written again";
    if (write(fromBinary.get(), false) != once)
        return "the binary form holds another scene";
    use(scene.get());
    SoToVRMLAction toVrml1;
    toVrml1.apply(scene.get());
    if (const char* fault = tryConverted(toVrml1.getVRMLSceneGraph(), "#VRML V1.0 ascii"))
        return fault;
    SoToVRML2Action toVrml2;
    toVrml2.apply(scene.get());
    return tryConverted(toVrml2.getVRML2SceneGraph(), "#VRML V2.0 utf8");
}

/// For libFuzzer: a header of the format, then the bytes.
inline int run(std::string_view header, const std::uint8_t* data, std::size_t size)
{
    silence();
    std::string bytes(header);
    bytes.append(reinterpret_cast<const char*>(data), size);
    if (const char* fault = findDisagreement(bytes)) {
        std::fprintf(stderr, "%s\n", fault);
        std::abort();
    }
    return 0;
}

} // namespace fuzz

#include <kalmyr/nodes/SoShaderObject.h>

#include "core/CacheLock.h"
#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoImageFile.h>

#include <filesystem>
#include <system_error>
#include <vector>

namespace {

/// When the file was changed last; 0 when there is none.
std::int64_t timeOf(const SbString& path)
{
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path.getString(), error);
    return error ? 0 : static_cast<std::int64_t>(time.time_since_epoch().count());
}

} // namespace

SO_NODE_SOURCE(SoShaderObject)

SoShaderObject::SoShaderObject()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(isActive, (true));
    SO_ADD_FIELD(source, (""));
    SO_ADD_FIELD(filename, (""));
    SO_ADD_EMPTY_FIELD(parameter);
}

SoShaderObject::~SoShaderObject() = default;

void SoShaderObject::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoShaderObject, SoNode, "ShaderObject");
}

void SoShaderObject::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_loadedName.makeEmpty();
}

void SoShaderObject::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    setDirectory(static_cast<const SoShaderObject*>(from)->m_directory);
}

void SoShaderObject::reload()
{
    m_loadedName.makeEmpty();
    touch();
}

std::string SoShaderObject::getLabel() const
{
    std::string label = getTypeId().getName().getString();
    label += " \"";
    label += getName().getString();
    label += '"';
    if (!filename.getValue().isEmpty())
        label += std::string(" ") + filename.getValue().getString();
    return label;
}

std::string SoShaderObject::getText()
{
    const SbString& name = filename.getValue();
    if (!isActive.getValue())
        return {};
    if (name.isEmpty() || filename.isIgnored())
        return source.getValue().getString();
    SbString error;
    {
        const kalmyr::detail::CacheLock lock;
        const SbString path = SoImageFile::findFile(name, m_directory);
        const std::int64_t time = timeOf(path);
        if (name == m_loadedName && time == m_time)
            return m_text;
        m_loadedName = name;
        m_time = time;
        std::vector<char> bytes;
        const bool ok = SbFileHelper::readFile(path, bytes, &error);
        m_text.assign(bytes.begin(), bytes.end());
        if (ok)
            return m_text;
        m_text.clear();
    }
    // Without the lock: a handler may do anything.
    SoError::post("%s: %s", getLabel().c_str(), error.getString());
    return {};
}

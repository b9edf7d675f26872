#include <kalmyr/fields/SoSFEngine.h>

SO_FIELD_SOURCE(SoSFEngine, SoSField, "SFEngine")
SO_FIELD_SOURCE(SoMFEngine, SoMField, "MFEngine")

bool SoSFEngine::readObject(SoFieldReader& in, SoRef<SoEngine>& engine)
{
    SoEngine* read = nullptr;
    if (!in.readEngine(read))
        return false;
    engine = read;
    return true;
}

void SoSFEngine::writeObject(SoFieldWriter& out, const SoEngine* engine)
{
    out.writeEngine(engine);
}

bool SoMFEngine::readObject(SoFieldReader& in, SoRef<SoEngine>& engine)
{
    return SoSFEngine::readObject(in, engine);
}

void SoMFEngine::writeObject(SoFieldWriter& out, const SoEngine* engine)
{
    SoSFEngine::writeObject(out, engine);
}

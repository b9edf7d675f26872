// Values of the base library: transformations, texts, names, a dictionary, settings and errors.

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbDict.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoPreferences.h>

#include <cstdio>

int main()
{
    SbMatrix turn;
    turn.setTransform(SbVec3f(1, 2, 3), SbRotation(SbVec3f(0, 0, 1), 1.5f), SbVec3f(2, 2, 2));
    SbBox3f box(SbVec3f(-1, -1, -1), SbVec3f(1, 1, 1));
    box.transform(turn);
    const SbVec3f back = turn.inverse().point(turn.point(SbVec3f(1, 0, 0)));
    std::printf("%s, %s\n", back.equals(SbVec3f(1, 0, 0), 1e-5f) ? "back" : "lost",
                box.intersect(SbVec3f(1, 2, 3)) ? "inside" : "outside");

    const SbString text = SbString::fromLatin1("caf\xe9"); // UTF-8 inside
    std::printf("%zu bytes, %zu characters\n", text.getLength(), text.toUtf16().size());
    SbDict<SbName, int> counts;
    counts.enter("cube", 2);
    counts.enter("cone", 1);
    counts.forEach([](SbName name, int n) { std::printf("%s %d\n", name.getString(), n); });
    std::puts(SoPreferences::getBool("KMR_EXAMPLE_QUIET", false) ? "quiet" : "talkative");
    return 0;
}

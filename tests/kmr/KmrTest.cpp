#include "support/Program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

using support::Outcome;

class KmrTest : public testing::Test, protected support::TempFolder {
protected:
    static Outcome run(const std::string& arguments)
    {
        return support::runProgram("kmr", arguments);
    }
};

/// kmr with one argument that is a pipe, which it has open and waits for.
class WaitingKmr {
public:
    WaitingKmr(const std::string& command, const std::string& pipe, const std::string& errors)
    {
        mkfifo(pipe.c_str(), 0600);
        m_process = fork();
        if (m_process == 0) {
            std::signal(SIGINT, SIG_DFL); // the test may have been started deaf to it
            const std::string program = std::string(MIRABO_RUNTIME_DIR) + "/kmr";
            execl("/bin/sh", "sh", "-c",
                  ("exec " + program + " " + command + " 2>" + errors + " </dev/null").c_str(),
                  nullptr);
            _exit(127);
        }
        // Opens as soon as kmr has done so, unless that has ended.
        while (m_status < 0 && m_pipe < 0) {
            m_pipe = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK);
            if (m_pipe < 0)
                wait(WNOHANG);
        }
    }
    ~WaitingKmr() { end(); }

    bool isWaiting() const { return m_pipe >= 0; }
    void interrupt() const { kill(m_process, SIGINT); }
    void write(std::string_view text) const
    {
        EXPECT_EQ(::write(m_pipe, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Closes the pipe; the exit status, -1 when a signal ended the program.
    int end()
    {
        if (m_pipe >= 0)
            close(m_pipe);
        m_pipe = -1;
        if (m_status < 0)
            wait(0);
        return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1;
    }

private:
    void wait(int options)
    {
        int status = 0;
        if (waitpid(m_process, &status, options) == m_process)
            m_status = status;
    }

    pid_t m_process = -1;
    int m_pipe = -1;
    int m_status = -1; ///< as waitpid() gives it; -1 while it runs
};

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

constexpr const char* kScene =
    "#VRML V2.0 utf8\n"
    "PROTO Ball [ field SFFloat r 1 ] { Shape { geometry Sphere { radius IS r } } }\n"
    "DEF A Transform { translation 5 0 0 children [ Ball { r 2 } ] } USE A\n"
    "WorldInfo { title \"caf\xe9 \\\"{ Box { }\" } # Box { }\n";

/// Files of the corpus say in a remark which nodes are in them.
std::map<std::string, std::string> nodesOfTheCorpus()
{
    constexpr std::string_view kMark = "# nodes ";
    std::map<std::string, std::string> nodes;
    for (const auto& entry : fs::recursive_directory_iterator(MIRABO_TEST_DATA_DIR "/formats")) {
        const std::string text =
            entry.is_regular_file() ? support::readFile(entry.path()) : std::string();
        const std::size_t at = text.find(kMark);
        if (at == std::string::npos)
            continue;
        const std::size_t begin = at + kMark.size();
        nodes[entry.path().string()] = text.substr(begin, text.find('}', begin) + 1 - begin);
    }
    return nodes;
}

} // namespace

TEST_F(KmrTest, TellsWhatIsInAFile)
{
    const std::string file = write("a b.wrl", kScene);
    const Outcome told = run("info --json '" + file + "'");
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.errors, "");
    const std::string& json = told.output;
    EXPECT_TRUE(has(json, "\"format\":\"vrml2\",\"compressed\":false")) << json;
    EXPECT_TRUE(has(json, "\"nodes\":{\"VRMLProtoInstance\":1,\"VRMLShape\":1,\"VRMLSphere\":1,"
                          "\"VRMLTransform\":1,\"VRMLWorldInfo\":1},\"instances\":5,"
                          "\"occurrences\":9"))
        << json;
    EXPECT_TRUE(has(json, "\"bbox\":[3,-2,-2,7,2,2]")) << json;
    EXPECT_TRUE(has(json, "\"parsed\":{\"nodes\":{\"Ball\":1,\"Transform\":1,\"WorldInfo\":1},"
                          "\"proto_nodes\":{\"Shape\":1,\"Sphere\":1},\"def\":1,\"use\":1,"
                          "\"route\":0,\"proto\":1,\"externproto\":0}"))
        << json;
    EXPECT_EQ(json.find('\n'), json.size() - 1);
}

TEST_F(KmrTest, CountsTheNodesOfTheCorpusAndOfWhatItIsConvertedTo)
{
    const std::map<std::string, std::string> nodes = nodesOfTheCorpus();
    ASSERT_GT(nodes.size(), 15u);
    std::vector<std::pair<std::string, std::string>> files(nodes.begin(), nodes.end());
    for (const auto& [file, wanted] : nodes) {
        for (const char* name : {".ky", ".wrl"}) { // both hold all that is in the file
            const std::string copy = path((std::to_string(files.size()) + name).c_str());
            EXPECT_EQ(run("convert '" + file + "' " + copy).status, 0) << file;
            files.emplace_back(copy, wanted);
        }
    }
    std::string names;
    for (const auto& [file, wanted] : files)
        names += " '" + file + "'";
    const Outcome told = run("info --json" + names);
    EXPECT_EQ(told.status, 0) << told.errors;
    std::istringstream lines(told.output);
    std::string line;
    for (const auto& [file, wanted] : files) {
        std::getline(lines, line);
        EXPECT_TRUE(has(line, "\"nodes\":" + wanted + ",\"instances\"")) << wanted << "\n" << line;
    }
}

TEST_F(KmrTest, KnowsTheNodesOfTheModulesThatAreInstalled)
{
    const std::string file = write("handles.ky", "#Kalmyr V1.0 ascii\nSeparator { Rotor { } "
                                                 "TranslateManip { } Translate1Dragger { } Array { "
                                                 "numElements1 3 Cube { } } }\n");
    const Outcome told = run("info --json " + file);
    EXPECT_EQ(told.errors, "");
    for (const char* type : {"Rotor", "TranslateManip", "Translate1Dragger", "Array"})
        EXPECT_TRUE(has(told.output, "\"" + std::string(type) + "\":1")) << told.output;
    EXPECT_FALSE(has(told.output, "UnknownNode"));
    // Modules are looked for beside the module tool: here it stands alone.
    const fs::path libraries = fs::path(MIRABO_RUNTIME_DIR).parent_path() / "lib";
    fs::create_symlink(libraries / "libTilevex.so.0", path("libTilevex.so.0"));
    setenv("LD_LIBRARY_PATH", folder().c_str(), 1);
    const Outcome bare = run("info --json " + file);
    unsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(bare.status, 0) << bare.errors;
    EXPECT_TRUE(has(bare.output, "\"UnknownNode\":4")) << bare.output;
}

TEST_F(KmrTest, CountsWhatNestedPrototypesPassOnOnce)
{
    constexpr int kLevels = 40;
    std::string text = "#VRML V2.0 utf8\nPROTO P0 [ field MFNode children [ ] ] { Group { children "
                       "IS children } }\n";
    for (int i = 1; i < kLevels; ++i)
        text += "PROTO P" + std::to_string(i) + " [ field MFNode children [ ] ] { P"
                + std::to_string(i - 1) + " { children IS children } }\n";
    const std::string file =
        write("robot.wrl", text + "P" + std::to_string(kLevels - 1)
                               + " { children [ Viewpoint { } Shape { geometry Box { } } ] }\n");
    const Outcome told = run("info --json " + file);
    EXPECT_TRUE(has(told.output, "\"occurrences\":" + std::to_string(kLevels + 4) + ","))
        << told.output;
    EXPECT_TRUE(has(told.output, "\"triangles\":12,")) << told.output;
    EXPECT_EQ(run("export " + file + " " + path("robot.ps")).status, 0);
}

TEST_F(KmrTest, GoesOnBehindABrokenFile)
{
    const std::string good = write("good.ky", "#Kalmyr V1.0 ascii\nCube { }\n");
    const std::string bad = write("bad.wrl", "#VRML V2.0 utf8\nGroup { children [ Shape {\n");
    const Outcome told = run("info --json " + path("none.wrl") + " " + bad + " " + good);
    EXPECT_EQ(told.status, 1);
    EXPECT_TRUE(has(run("info -- -none.wrl").errors, "-none.wrl: error: it cannot be opened"));
    EXPECT_TRUE(has(told.errors, bad + ":3:1: error: expected a field or '}'")) << told.errors;
    EXPECT_TRUE(has(told.errors, path("none.wrl") + ": error: it cannot be opened"));
    EXPECT_TRUE(has(told.output, "\"errors\":[{\"line\":3,\"column\":1,")) << told.output;
    EXPECT_TRUE(has(told.output, "\"triangles\":12")) << told.output;
}

TEST_F(KmrTest, RefusesLibertiesWhenStrict)
{
    const std::string odd = write("odd.wrl", "#VRML V2.0 utf8\nPROTO P [ ] { }\nUSE Nobody\n");
    const std::string good = write("good.wrl", "#VRML V2.0 utf8\nGroup { }\n");
    EXPECT_EQ(run("info " + odd).status, 0);
    EXPECT_EQ(run("info --strict " + good).status, 0);
    const Outcome told = run("info --json --strict " + odd);
    EXPECT_EQ(told.status, 1);
    EXPECT_TRUE(has(told.errors, odd + ":2:15: error: in prototype 'P'")) << told.errors;
    EXPECT_TRUE(has(told.errors, odd + ":3:5: error: expected a name that DEF gave"));
    EXPECT_TRUE(has(told.output, "\"ok\":false") && has(told.output, "\"warnings\":[]"));
}

TEST_F(KmrTest, ConvertsBetweenAllFormats)
{
    const std::string file = write("in.wrl", kScene);
    ASSERT_EQ(run("convert " + file + " " + path("a.ky")).status, 0);
    ASSERT_EQ(
        run("convert " + path("a.ky") + " " + path("b.kyz") + " --format kalmyr-binary").status, 0);
    ASSERT_EQ(run("convert " + path("b.kyz") + " " + path("c.ky")).status, 0);
    EXPECT_EQ(read("a.ky"), read("c.ky"));
    ASSERT_EQ(run("convert " + file + " " + path("d.wrl") + " --format=vrml1").status, 0);
    ASSERT_EQ(run("convert " + path("d.wrl") + " " + path("e.wrl")).status, 0);
    EXPECT_EQ(read("e.wrl").substr(0, 16), "#VRML V1.0 ascii");
    for (const char* name : {"b.kyz", "d.wrl", "e.wrl"})
        EXPECT_TRUE(has(run("info --json " + path(name)).output, "\"bbox\":[3,-2,-2,7,2,2]"))
            << name;
    EXPECT_TRUE(has(run("info " + path("b.kyz")).output, "kalmyr-binary, compressed"));
    // What stands at the top is still there, alone or side by side.
    for (const char* text : {"#VRML V2.0 utf8\n\nGroup {\n  children [\n    Group { }\n  ]\n}\n",
                             "#VRML V1.0 ascii\n\nCube { }\nSphere { }\n"}) {
        const std::string format = has(text, "V2") ? " --format vrml2" : " --format vrml1";
        run("convert " + write("top.wrl", text) + " " + path("top.ky"));
        run("convert " + path("top.ky") + " " + path("back.wrl") + format);
        EXPECT_EQ(read("back.wrl"), text);
    }
    const Outcome refused = run("convert " + file + " " + path("no/such/folder.ky"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errors.rfind(path("no/such/folder.ky") + ": error: cannot be created", 0), 0u)
        << refused.errors;
}

TEST_F(KmrTest, RefusesWrongUsage)
{
    const char* const wrong[] = {"",
                                 "dance",
                                 "info",
                                 "info --loud x",
                                 "convert a",
                                 "convert a b --format doc",
                                 "render a b.png --size 3",
                                 "render a b.png --size 16385x1",
                                 "render a b.png --background red",
                                 "render a b.doc",
                                 "render a b.jpg --transparent-background",
                                 "export a b.png",
                                 "export a b.pdf --page huge",
                                 "export a b.pdf --tolerance 0",
                                 "export a b.ps --with-model",
                                 "export a b c",
                                 "export --to pdf",
                                 "export --to pdf a.ky sub/a.ky --folder x",
                                 "render --to png a.png"};
    for (const char* arguments : wrong) {
        const Outcome told = run(arguments);
        EXPECT_EQ(told.status, 2) << arguments;
        EXPECT_TRUE(has(told.errors, "usage: kmr")) << arguments;
    }
    EXPECT_TRUE(has(run("--help").output, "usage: kmr"));
}

TEST_F(KmrTest, DrawsAPicture)
{
    const std::string file =
        write("red.ky", "#Kalmyr V1.0 ascii\nMaterial { diffuseColor 1 0 0 }\nCube { }\n");
    // Far away, and in the dark but for the viewer's light.
    const std::string far = write("far.wrl", "#VRML V1.0 ascii\nSeparator { PerspectiveCamera { "
                                             "position 0 0 400 heightAngle .01 }\n"
                                             "Material { diffuseColor 1 0 0 } Cube { } }\n");
    for (const std::string& scene : {file, far}) {
        const Outcome drawn =
            run("render " + scene + " " + path("red.bmp") + " --size 40x30 --background 0,0,1");
        if (has(drawn.errors, "OpenGL"))
            GTEST_SKIP() << drawn.errors;
        ASSERT_EQ(drawn.status, 0) << drawn.errors;
        const std::string bmp = read("red.bmp");
        ASSERT_EQ(bmp.substr(0, 2), "BM");
        const auto start = static_cast<unsigned char>(bmp[10]);
        ASSERT_GE(bmp.size(), start + 40u * 30 * 3);
        const auto byte = [&](int x, int y, int c) {
            return static_cast<unsigned char>(
                bmp[start + static_cast<std::size_t>((y * 40 + x) * 3 + c)]);
        };
        EXPECT_EQ(byte(0, 0, 0), 255); // blue comes first
        EXPECT_GT(byte(20, 15, 2), 100) << scene;
        EXPECT_LT(byte(20, 15, 0), 60) << scene;
    }
}

TEST_F(KmrTest, TakesAllKindsOfTransparency)
{
    const std::string sheet = "Coordinate3 { point [ -1 -1 -1, 1 -1 1, 1 1 1, -1 1 -1 ] } "
                              "FaceSet { numVertices 4 } }\n";
    const std::string scene =
        write("sheets.wrl", "#VRML V1.0 ascii\nSeparator { OrthographicCamera { position 0 0 5 }\n"
                            "LightModel { model BASE_COLOR }\n"
                            "Separator { Material { diffuseColor 1 0 0 transparency 0.5 } "
                                + sheet
                                + "Separator { Material { diffuseColor 0 0 1 transparency 0.5 } "
                                  "Rotation { rotation 0 1 0 1.5707963 } "
                                + sheet + "}\n");
    std::map<int, std::string> pictures;
    for (int type = 0; type <= 13; ++type) {
        const Outcome drawn = run("render " + scene + " " + path("sheets.bmp")
                                  + " --size 64x64 --transparency " + std::to_string(type));
        if (has(drawn.errors, "OpenGL"))
            GTEST_SKIP() << drawn.errors;
        ASSERT_EQ(drawn.status, 0) << drawn.errors;
        pictures[type] = read("sheets.bmp");
    }
    for (const auto& [number, same] : {std::pair(1, 3), {2, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12}})
        EXPECT_EQ(pictures[number], pictures[same]) << number;
    for (const int type : {0, 3, 10, 12, 13})
        EXPECT_NE(pictures[type], pictures[8]) << type;
}

TEST_F(KmrTest, LightsFromTheEyeUnlessForbidden)
{
    for (const bool isForbidden : {false, true}) {
        const std::string scene = write(
            "dark.wrl", std::string("#VRML V2.0 utf8\n")
                            + (isForbidden ? "NavigationInfo { headlight FALSE }\n" : "")
                            + "Shape { appearance Appearance { material Material { diffuseColor 1 "
                              "0 0 } } geometry Box { } }\n");
        const Outcome drawn =
            run("render " + scene + " " + path("dark.bmp") + " --size 40x30 --background 0,0,1");
        if (has(drawn.errors, "OpenGL"))
            GTEST_SKIP() << drawn.errors;
        ASSERT_EQ(drawn.status, 0) << drawn.errors;
        const std::string bmp = read("dark.bmp");
        const auto start = static_cast<unsigned char>(bmp.at(10));
        ASSERT_GE(bmp.size(), start + 40u * 30 * 3);
        const auto* middle =
            reinterpret_cast<const unsigned char*>(&bmp[start + (15 * 40 + 20) * 3]);
        EXPECT_EQ(middle[0], 0); // the box, not the background
        EXPECT_NEAR(middle[2], isForbidden ? 0 : 255, 2);
    }
}

/// Two cameras: the first looks at a red cube, the one called Side at a green one.
constexpr const char* kTwoViews =
    "#Kalmyr V1.0 ascii\nSeparator { OrthographicCamera { position 0 0 10 nearDistance 1 "
    "farDistance "
    "20 height 4 }\nSeparator { Translation { translation 20 0 0 } DEF Side "
    "OrthographicCamera { position 0 0 10 nearDistance 1 farDistance 20 height 4 } }\nLightModel { "
    "model BASE_COLOR }\nMaterial { diffuseColor 1 0 0 } Cube { }\nMaterial { diffuseColor 0 1 0 } "
    "Translation { translation 20 0 0 } Cube { } }\n";

TEST_F(KmrTest, ExportsIntoAllFormats)
{
    const std::string scene =
        write("a.ky", "#Kalmyr V1.0 ascii\nSeparator { Sphere { } Cone { } }\n");
    const std::map<std::string, std::string> beginnings{{"pdf", "%PDF-1."},
                                                        {"ps", "%!PS-Adobe-3.0"},
                                                        {"cgm", std::string("\0", 1)},
                                                        {"emf", std::string("\1\0\0\0", 4)},
                                                        {"hpgl", ""},
                                                        {"u3d", std::string("U3D\0", 4)}};
    for (const auto& [extension, beginning] : beginnings) {
        const Outcome told = run("export " + scene + " " + path("a." + extension));
        ASSERT_EQ(told.status, 0) << told.errors;
        const std::string bytes = read("a." + extension);
        EXPECT_EQ(bytes.substr(0, beginning.size()), beginning) << extension;
        EXPECT_GT(bytes.size(), 500u) << extension;
    }
    EXPECT_TRUE(has(read("a.hpgl"), "IN;"));
    EXPECT_TRUE(has(read("a.hpgl"), "FP;"));
}

TEST_F(KmrTest, ShowsTheSceneThroughTheNamedCamera)
{
    const std::string scene = write("views.ky", kTwoViews);
    const auto colorsOf = [&](const std::string& camera) {
        const Outcome told = run("export " + scene + " " + path("view.ps") + camera);
        EXPECT_EQ(told.status, 0) << told.errors;
        const std::string text = read("view.ps");
        return std::pair(has(text, "\n1 0 0 rg"), has(text, "\n0 1 0 rg"));
    };
    EXPECT_EQ(colorsOf(""), std::pair(true, false));
    EXPECT_EQ(colorsOf(" --camera Side"), std::pair(false, true));
    const Outcome wrong = run("export " + scene + " " + path("none.ps") + " --camera Other");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(has(wrong.errors, "there is no camera named \"Other\"")) << wrong.errors;
    EXPECT_FALSE(fs::exists(path("none.ps")));
}

TEST_F(KmrTest, DrawsInTheStyleThatIsAskedFor)
{
    const std::string scene = write(
        "cube.wrl", "#VRML V1.0 ascii\nSeparator { OrthographicCamera { position 0 0 5 height 4 "
                    "}\nLightModel { model BASE_COLOR }\nMaterial { diffuseColor 1 0 0 } Cube "
                    "{ } }\n");
    std::map<std::string, int> red;
    for (const std::string style :
         {"as-is", "no-texture", "hidden-line", "wireframe", "points", "boxes", "flat"}) {
        const Outcome drawn = run("render " + scene + " " + path("cube.bmp")
                                  + " --samples 1 --size 40x40 --style " + style);
        if (has(drawn.errors, "OpenGL"))
            GTEST_SKIP() << drawn.errors;
        ASSERT_EQ(drawn.status, 0) << drawn.errors;
        const std::string bmp = read("cube.bmp");
        for (std::size_t i = static_cast<unsigned char>(bmp[10]); i + 2 < bmp.size(); i += 3)
            red[style] += static_cast<unsigned char>(bmp[i + 2]) > 128 ? 1 : 0;
    }
    EXPECT_EQ(red["as-is"], 400);
    EXPECT_EQ(red["flat"], 400);
    EXPECT_LT(red["wireframe"], 100);
    EXPECT_LT(red["boxes"], 100);
    EXPECT_LT(red["points"], red["wireframe"]);
    EXPECT_EQ(run("render " + scene + " a.png --style dotted").status, 2);
}

TEST_F(KmrTest, ShowsAllOfTheSceneOnRequest)
{
    const std::string scene = write("far.wrl", "#VRML V1.0 ascii\nSeparator { OrthographicCamera { "
                                               "position 0 0 5 height 1 }\nLightModel { model "
                                               "BASE_COLOR }\nMaterial { diffuseColor 1 0 0 } "
                                               "Translation { translation 50 0 0 } Cube { } }\n");
    for (const std::string option : {"", " --view-all"}) {
        const Outcome drawn =
            run("render " + scene + " " + path("far.bmp") + " --size 40x40" + option);
        if (has(drawn.errors, "OpenGL"))
            GTEST_SKIP() << drawn.errors;
        ASSERT_EQ(drawn.status, 0) << drawn.errors;
        const std::string bmp = read("far.bmp");
        const auto start = static_cast<unsigned char>(bmp[10]);
        const auto red = static_cast<unsigned char>(bmp[start + (20 * 40 + 20) * 3 + 2]);
        EXPECT_EQ(red, option.empty() ? 0 : 255);
    }
}

TEST_F(KmrTest, DrawsPicturesAsWideAsTheyMayBe)
{
    const std::string scene = write("cube.ky", "#Kalmyr V1.0 ascii\nCube { }\n");
    for (const std::string extension : {"bmp", "png", "jpg", "tif", "rgb", "ps"}) {
        const Outcome drawn = run("render " + scene + " " + path("wide." + extension)
                                  + " --size 16384x96 --samples 1");
        if (has(drawn.errors, "OpenGL"))
            GTEST_SKIP() << drawn.errors;
        ASSERT_EQ(drawn.status, 0) << drawn.errors;
        EXPECT_GT(read("wide." + extension).size(), 1000u) << extension;
    }
    EXPECT_EQ(read("wide.bmp").size(), 54u + 16384u * 96 * 3);
}

TEST_F(KmrTest, TakesManyFilesAtOnce)
{
    const std::string one = write("one.ky", "#Kalmyr V1.0 ascii\nCube { }\n");
    const std::string bad = write("bad.ky", "#Kalmyr V1.0 ascii\nCube {\n");
    const std::string two = write("two.ky", "#Kalmyr V1.0 ascii\nCone { }\n");
    fs::create_directory(path("out"));
    const Outcome told = run("export --to pdf --folder " + path("out") + " " + one + " " + bad + " "
                             + two + " --page letter --portrait --hidden-lines");
    EXPECT_EQ(told.status, 1); // for the broken one
    EXPECT_TRUE(has(told.errors, "bad.ky:")) << told.errors;
    EXPECT_TRUE(fs::exists(path("out/one.pdf")) && fs::exists(path("out/two.pdf")));
    EXPECT_TRUE(has(read("out/one.pdf"), "/MediaBox [0 0 612 792]"));
    EXPECT_FALSE(fs::exists(path("out/bad.pdf")));
}

TEST_F(KmrTest, KeepsTheOldFileWhenItCannotExport)
{
    const std::string scene = write("empty.ky", "#Kalmyr V1.0 ascii\nSeparator { }\n");
    for (const char* name : {"old.pdf", "old.emf", "old.u3d"}) {
        write(name, "as it was");
        const Outcome told = run("export " + scene + " " + path(name));
        EXPECT_EQ(told.status, 1);
        EXPECT_TRUE(has(told.errors, std::string(name) + ": error: ")) << told.errors;
        EXPECT_EQ(read(name), "as it was");
    }
}

TEST_F(KmrTest, ReplacesFilesAsAWholeOrNotAtAll)
{
    std::string points, faces;
    for (int i = 0; i < 900; ++i) {
        points += std::to_string(i * 7919 % 997) + " " + std::to_string(i * 6151 % 991) + " 0, ";
        faces += std::to_string(i) + (i % 3 == 2 ? " -1 " : " ");
    }
    const std::string scene =
        write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { Coordinate3 { point [ " + points
                              + "] } IndexedFaceSet { coordIndex [ " + faces + "] } }\n");
    for (const char* command :
         {"render old.png", "render old.jpg", "render old.bmp", "render old.tif", "render old.rgb",
          "render old.ps", "export old.pdf", "export old.u3d", "export old.ps", "export old.cgm",
          "export old.emf", "export old.hpgl", "convert old.ky", "convert old.kyz",
          "convert old.wrl"}) {
        const std::string name = std::string(command).substr(std::string(command).find(' ') + 1);
        const std::string verb = std::string(command).substr(0, std::string(command).find(' '));
        write(name, "as it was");
        struct rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        const struct rlimit small = {1000, before.rlim_max}; // like a disk that is nearly full
        setrlimit(RLIMIT_FSIZE, &small);
        const Outcome told = run(verb + " " + scene + " " + path(name));
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(told.status, 1) << command;
        EXPECT_EQ(told.errors.rfind(path(name) + ": error: ", 0), 0u) << told.errors;
        EXPECT_TRUE(has(told.errors, ": File too large\n")) << told.errors;
        EXPECT_EQ(read(name), "as it was") << command;
        fs::remove(path(name));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), fs::directory_iterator()), 1);
    if (fs::exists("/dev/full"))
        for (const std::string& printing : {"info " + scene, std::string("--help")}) {
            const Outcome told = run(printing + " >/dev/full");
            EXPECT_EQ(told.status, 1) << printing;
            EXPECT_TRUE(has(told.errors, "No space left on device")) << told.errors;
        }
}

TEST_F(KmrTest, StopsReadingWhenInterrupted)
{
    const std::string good = write("good.ky", "#Kalmyr V1.0 ascii\nCube { }\n");
    const std::string outer = write("outer.wrl", "#VRML V2.0 utf8\nInline { url \"pipe\" }\n");
    const std::string out = write("out.ky", "as it was");
    const std::string pipe = path("pipe"), errors = path("errors");
    const struct {
        std::string command;
        std::string file; ///< that is told of
    } cases[] = {
        {"info " + pipe + " " + good, pipe},
        {"info --json " + outer + " " + good, outer}, // the pipe is a file that it refers to
        {"convert " + pipe + " " + out, pipe},
        {"convert " + outer + " " + out, outer},
        {"render " + pipe + " " + path("out.png"), pipe},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.command);
        WaitingKmr kmr(one.command + " >" + path("told"), pipe, errors);
        ASSERT_TRUE(kmr.isWaiting()) << read("errors");
        kmr.write("#VRML V2.0 utf8\nGroup {");
        kmr.interrupt();
        EXPECT_EQ(kmr.end(), 130);
        EXPECT_EQ(read("errors"), "kmr: reading " + one.file + " was stopped\n");
        EXPECT_EQ(read("told"), "");
        EXPECT_EQ(read("out.ky"), "as it was");
        EXPECT_FALSE(fs::exists(path("out.png")));
    }
    for (const auto& entry : fs::directory_iterator(folder()))
        EXPECT_FALSE(has(entry.path().string(), ".saving")) << entry.path();
}

#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/Export.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Writes a scene as a U3D model (ECMA-363), which PDF documents can hold.
///
/// Groups, shapes, lights and cameras become nodes of the same names and transformations. Shapes
/// that share their geometry share it in the file, and so do equal materials and images. Switches
/// and levels of detail show what they show in the traversal; what is invisible is left out.
///
/// Use: open a file, apply the action, close the file. Applied several times in between, the scenes
/// stand in one file side by side. The file takes its name when it is closed, and only when all
/// went well; until then, and after a failure, what stood under that name stays as it was.
///
/// Threads: as other actions; the graph may be changed between apply() and closeFile(), which
/// writes what apply() saw.
class PLOTREL_API SoToU3DAction : public SoAction {
    SO_ACTION_HEADER(SoToU3DAction)

public:
    SoToU3DAction();
    /// Closes an open file if there is anything to write.
    ~SoToU3DAction() override;

    /// Begins a file; discards one that is open. False, with an error that begins "Can not open
    /// file " posted, when it cannot be written.
    bool openFile(const char* name);
    bool isOpen() const;
    /// Writes what was collected and gives the file its name. False when no file is open or the
    /// progress callback stopped it, and, with an error posted, when there is nothing to write, it
    /// comes to more than 2,000,000 nodes, or it cannot be stored.
    bool closeFile();
    /// Ends without writing; an existing file stays as it was.
    void discardFile();

    /// Collects what is to be seen below `root`, or along the path and below its tail. Needs an
    /// open file; without one nothing happens, and a debug error is posted. Faces, lines and points
    /// with coordinates that are no numbers, or beyond 1e37, are left out with one warning.
    void apply(SoNode* root) override;
    void apply(SoPath* path) override;

    /// Writes one scene into `bytes` instead; an open file is not touched. False, and `bytes` is
    /// empty, as for closeFile().
    bool writeToMemory(SoNode* root, std::string& bytes);

    /// Names of the views in what was written last, in order of traversal. A document that embeds
    /// the model may refer to them.
    const std::vector<std::string>& getViewNames() const;

    /// Packs faces, lines and points with the format's arithmetic coder. Off at first: files
    /// without it are larger, but written faster and read by more programs.
    void setCompression(bool on);
    bool isCompressed() const;

    /// Length of the scene's unit in metres, written into the file for programs that measure; at
    /// first 0: not known. What is negative or not finite is a broken contract and changes nothing.
    void setMetersPerUnit(double metres);
    double getMetersPerUnit() const;

    /// Called now and then with the share of the work that is done: 0 while a scene is traversed,
    /// and up to 1 while bytes are made. False stops: nothing is written then. The scene must not
    /// change at 0; from then on it may, what is written is the scene as it was.
    using ProgressCallback = std::function<bool(float share)>;
    void setProgressCallback(ProgressCallback callback);
    /// Whether the progress callback stopped it since the file was opened, or the latest
    /// writeToMemory().
    bool wasStopped() const;

protected:
    void beginTraversal(SoNode* root) override;
    bool beforeNode(SoNode* node) override;
    void afterNode(SoNode* node) override;

private:
    struct Job;
    bool hasRoom();
    bool encode(const char* target, std::string& bytes);
    void collect(const std::function<void()>& traverse);

    std::unique_ptr<Job> m_job;
};

#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoCascade.h>
#include <kalmyr/sensors/SoFieldSensor.h>
#include <kalmyr/vrml/SoVRMLBindable.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLParent.h>
#include <kalmyr/vrml/SoVRMLSensors.h>

#include <span>
#include <string>
#include <vector>

/// \file
/// Places on the earth, of amendment 1 of VRML97. `geoSystem` says how places are written: "GD"
/// (latitude, longitude, elevation), "UTM" with a zone ("Z10", "S" for the southern half; northing,
/// easting, elevation) or "GC" (metres from the earth's centre), with the code of an ellipsoid;
/// "longitude_first" and "easting_first" turn the order. Elevations count from the ellipsoid; a
/// geoid is passed over.
///
/// Shapes lie in metres from the `geoOrigin`, or from the earth's centre without one, along
/// the axes of the earth: x to the equator at longitude 0, z to the north pole. Computed in double
/// before the origin is taken off. With `rotateYUp` of the origin x is east, y up and z south
/// there. A place that cannot be read is reported once, and what needs it is not drawn.

/// The place that others measure from.
class KALMYR_API SoVRMLGeoOrigin : public SoNode {
    SO_NODE_HEADER(SoVRMLGeoOrigin)

public:
    SoVRMLGeoOrigin();
    static void initClass();

    SoMFString geoSystem;
    SoSFString geoCoords;
    SoSFBool rotateYUp;

protected:
    ~SoVRMLGeoOrigin() override;
};

/// Positions for the geometry that holds it, given as places on the earth.
class KALMYR_API SoVRMLGeoCoordinate : public SoNode {
    SO_NODE_HEADER(SoVRMLGeoCoordinate)

public:
    SoVRMLGeoCoordinate();
    static void initClass();

    SoSFNode geoOrigin;
    SoMFString geoSystem;
    SoMFString point; ///< a place each

    /// The positions; none when a place cannot be read. Valid until the node changes.
    std::span<const SbVec3f> getPoints() const;

protected:
    ~SoVRMLGeoCoordinate() override;

private:
    mutable std::uint64_t m_builtFrom = 0;
    mutable std::vector<SbVec3f> m_points;
};

/// Heights over a grid of latitudes and longitudes, or of northings and eastings; rows go from west
/// to east and follow each other from south to north.
class KALMYR_API SoVRMLGeoElevationGrid : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLGeoElevationGrid)

public:
    SoVRMLGeoElevationGrid();
    static void initClass();

    SoSFNode color;
    SoSFNode normal;
    SoSFNode texCoord;
    SoSFFloat yScale; ///< of the heights
    SoSFBool ccw;
    SoSFBool colorPerVertex;
    SoSFFloat creaseAngle; ///< radians
    SoSFNode geoOrigin;
    SoMFString geoSystem;
    SoSFString geoGridOrigin; ///< the corner in the south-west; its elevation is added
    SoMFFloat height;
    SoSFBool normalPerVertex;
    SoSFBool solid;
    SoSFInt32 xDimension;
    SoSFString xSpacing; ///< degrees or metres
    SoSFInt32 zDimension;
    SoSFString zSpacing;
    SoMFFloat set_height; ///< event in
    SoSFFloat set_yScale; ///< event in

protected:
    ~SoVRMLGeoElevationGrid() override;
    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
    std::uint64_t stateKey(SoState* state) const override;

private:
    /// Positions, indices and texture coordinates; returns what is wrong.
    std::string fillGrid(kalmyr::ShapeSource& source) const;

    SoFieldSensor m_heightSensor, m_scaleSensor;
};

/// Children at a place on the earth, in metres: x east, y up and z south.
class KALMYR_API SoVRMLGeoLocation : public SoVRMLParent {
    SO_NODE_HEADER(SoVRMLGeoLocation)

public:
    SoVRMLGeoLocation();
    static void initClass();

    SoSFString geoCoords;
    SoSFNode geoOrigin;
    SoMFString geoSystem;

    /// From the space of the children to that of the node; false when the place cannot be read.
    bool getLocalMatrix(SbMatrix& matrix) const;

protected:
    ~SoVRMLGeoLocation() override;
    void setState(SoState* state) override;

private:
    mutable std::uint64_t m_builtFrom = 0;
    mutable bool m_isKnown = false;
    mutable SbMatrix m_matrix;
};

/// Shows `rootNode`, or the file of `rootUrl`, and in its place the files of the four children when
/// the eye is nearer to `center` than `range`. The files are read as those of inlines are.
class KALMYR_API SoVRMLGeoLOD : public SoNode {
    SO_NODE_HEADER(SoVRMLGeoLOD)

public:
    SoVRMLGeoLOD();
    static void initClass();

    SoSFString center;
    SoMFString child1Url;
    SoMFString child2Url;
    SoMFString child3Url;
    SoMFString child4Url;
    SoSFNode geoOrigin;
    SoMFString geoSystem;
    SoSFFloat range;
    SoMFString rootUrl;
    SoMFNode rootNode;
    SoMFNode children; ///< event out; never sent

    /// For readers, when the node is whole: makes the inlines that stand for its files. They are
    /// empty at first.
    void makeFiles();
    /// The inlines: that of the root, if there is one, and those of the children.
    SoChildList* getInternalChildren() const override { return &m_files; }

    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLGeoLOD() override;

private:
    void addFile(const SoMFString& url);
    bool isNear(SoState* state) const;
    void traverseRoot(SoAction* action);

    mutable SoChildList m_files;
    bool m_hasRootFile = false;
};

/// Says what the data are; without effect.
class KALMYR_API SoVRMLGeoMetadata : public SoNode {
    SO_NODE_HEADER(SoVRMLGeoMetadata)

public:
    SoVRMLGeoMetadata();
    static void initClass();

    SoMFNode data;
    SoMFString summary;
    SoMFString url;

protected:
    ~SoVRMLGeoMetadata() override;
};

/// Key places over a fraction of time. Places between keys are on the straight line in the numbers
/// of `geoSystem`.
class KALMYR_API SoVRMLGeoPositionInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLGeoPositionInterpolator)

public:
    SoVRMLGeoPositionInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoSFNode geoOrigin;
    SoMFString geoSystem;
    SoMFFloat key;
    SoMFString keyValue;
    SoSFString geovalue_changed; ///< event out
    SoSFVec3f value_changed;     ///< event out

    bool affectsState() const override { return false; }

protected:
    ~SoVRMLGeoPositionInterpolator() override;

private:
    void follow();

    SoFieldSensor m_sensor;
    SoCascade m_cascade;
};

/// A touch sensor that tells the place on the earth as well. The space of its group is taken for
/// the one that places are drawn in.
class KALMYR_API SoVRMLGeoTouchSensor : public SoVRMLTouchSensor {
    SO_NODE_HEADER(SoVRMLGeoTouchSensor)

public:
    SoVRMLGeoTouchSensor();
    static void initClass();

    SoSFNode geoOrigin;
    SoMFString geoSystem;
    SoSFString hitGeoCoord_changed; ///< event out

protected:
    ~SoVRMLGeoTouchSensor() override;
    void hover(const Pointer& pointer) override;
};

/// A place to look from, as SoVRMLViewpoint.
class KALMYR_API SoVRMLGeoViewpoint : public SoVRMLBindable {
    SO_NODE_HEADER(SoVRMLGeoViewpoint)

public:
    SoVRMLGeoViewpoint();
    static void initClass();

    SoSFFloat fieldOfView; ///< radians
    SoSFBool headlight;
    SoSFBool jump;
    SoMFString navType;
    SoSFString description;
    SoSFNode geoOrigin;
    SoMFString geoSystem;
    SoSFRotation orientation; ///< from x east, y up, z south; looks northwards at first
    SoSFString position;
    SoSFFloat speedFactor;
    SoSFRotation set_orientation; ///< event in
    SoSFString set_position;      ///< event in
    SoSFTime bindTime;            ///< event out

    /// Where a camera stands and how it is turned; false when the place cannot be read.
    bool getView(SbVec3f& place, SbRotation& turn) const;

protected:
    ~SoVRMLGeoViewpoint() override;
    void boundChanged(SbTime now) override;

private:
    SoFieldSensor m_positionSensor, m_orientationSensor;
};

/// An inline whose content comes and goes by an event.
class KALMYR_API SoVRMLInlineLoadControl : public SoVRMLInline {
    SO_NODE_HEADER(SoVRMLInlineLoadControl)

public:
    SoVRMLInlineLoadControl();
    static void initClass();

    SoSFBool load;     ///< false: nothing is shown, and read again when it becomes true
    SoMFNode children; ///< event out: what was read, when it comes or goes

    /// Makes the content what `load` asks for; readers call it when the node is whole.
    void follow();

protected:
    ~SoVRMLInlineLoadControl() override;

private:
    SoFieldSensor m_sensor;
};

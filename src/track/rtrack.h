#pragma once

#include "foundation/qtable.h"
#include "runtime/rtrackbase.h"
#include "track/dcamera_tcamera.h"
#include "track/rbestlaps.h"
#include "track/rcarpos.h"
#include "track/renvironment.h"
#include "track/rmarshalposts.h"
#include "track/ropenarchive.h"
#include "track/rpacenotes.h"
#include "track/rsplinerep.h"
#include "track/rsurfacetype.h"
#include "track/rtimeline.h"
#include "track/rtrackcam.h"
#include "track/rtracklook.h"
#include "track/rtrackpoints.h"
#include "track/rtrafficgrid.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class DOverlay;
class QInfo;
class RLidar;
class RSaveSet;
class PNewtonWorld;
class WorldScene;

// What a track takes from the program around it.
struct RTrackHost
{
  const QInfo* settings = nullptr; // the application's settings; null: all defaults. Outlives the track
  WorldScene* scene = nullptr;     // gets the scenery; null: nothing is shown. Outlives the track
  PNewtonWorld* physics = nullptr; // gets the scenery to collide with; null: nothing collides. Outlives the track
  bool noSplines = false;          // "spline.ini" is opened, but not read
  RAudio* audio = nullptr;         // plays the ambient sounds; null: they are silent. Outlives the track
  // Gets each of the track's files but special.ini when all that is wanted of it was read.
  std::function<void(const QInfo&)> afterRead = nullptr;
};

// One directory data/tracks/<name>/ without its scenery: identity, positions, lines, cameras, points, road.
// Created, named, loaded once, edited through its public fields, destroyed. Main thread only.
class RTrack : public RTrackBase
{
public:
  static constexpr int MAX_POSITIONS = 50;
  static constexpr int MAX_TIMELINES = 50;
  static constexpr int MAX_TRIGGERLINES = 100;
  static constexpr int MAX_TRACKCAMS = 200;
  static constexpr int MAX_WAYPOINTS = 400;
  static constexpr int MAX_AUDIO = 100;
  static constexpr int MAX_SURFACES = 50;
  static constexpr int PITLINES = 4;
  enum Flag : uint32_t
  {
    POINT_TO_POINT = 2,
    AUTO_RETURN = 8,
    NIGHT = 16,
    WATER_TRACK = 32
  };
  // Called while a track loads; false stops the loading of nodes.
  using ProgressCallback = std::function<bool(int current, int total, const char* text)>;

  explicit RTrack(const RTrackHost& newHost = {});
  ~RTrack() override;
  RTrack(const RTrack&) = delete;
  RTrack& operator=(const RTrack&) = delete;

  // Identity, from "track.ini".
  std::string name;
  std::string creator;
  std::string length; // for display; trackLength is the number
  std::string type = "flat";
  std::string file;
  std::string trackName; // the directory's own name
  std::string trackDir;  // "data/tracks/<trackName>"
  int racingClass = 0;
  std::string version;
  std::string id = "unknown_track";
  int preview = 0;
  int skin = 0;
  ProgressCallback progressCallback;

  // Where cars start, stop and are timed.
  uint32_t flags = 0;
  std::array<RCarPos, MAX_POSITIONS> gridPos;
  std::array<RCarPos, MAX_POSITIONS> pitPos;
  int gridCount = 0;
  int pitCount = 0;
  int pitSide = 1;
  DTable<std::unique_ptr<RTimeLine>, MAX_TIMELINES> timeLines;
  DTable<std::unique_ptr<RTriggerLine>, MAX_TRIGGERLINES> triggerLines;
  std::array<RTimeLine, PITLINES> pitInOutLines; // pit in, its speed limit, the limit's end, pit out
  DVector3 offTrackMin{0.0f};
  DVector3 offTrackMax{0.0f};
  DVector3 offTrackVector{0.0f};
  DVector3 endlessMin{0.0f};
  DVector3 endlessMax{0.0f};
  DVector3 endlessSize{0.0f};

  // What stands along the road.
  DTable<std::unique_ptr<RTrackCam>, MAX_TRACKCAMS> trackCams;
  DRail cameraList; // of trackCams; ListCameras renews it after one of them went
  DDirector_Track director;
  DTable<std::unique_ptr<RWayPoint>, MAX_WAYPOINTS> wayPoints;
  DTable<std::unique_ptr<RTrackAudio>, MAX_AUDIO> audio;
  RTrafficGrid trafficGrid;
  RSplineRep splines;
  float trackLength = 0; // metres, from the splines
  DTable<std::unique_ptr<RSurfaceType>, MAX_SURFACES> surfaces;
  RMarshalPosts marshalPosts;
  RBestLaps results;
  std::unique_ptr<RPaceNotes> paceNotes;

  // How it looks.
  std::array<std::string, 3> lights;
  DVector4 sky{0.0f};
  RSkyModel skyModel;
  RFog fog;
  REnvironment environment;
  RWeather weather;
  std::unique_ptr<RSun> sun; // after a load
  float shadowIntensity = 1;
  std::string colorGrade; // path of the picture
  bool showSplineEdge = false;
  bool showBestLine = false;
  float paceCarEndDistance = 0; // metres

  // Files that the track only knows of.
  RTrackFile lidarFile;
  DVector3 lidarTranslate{0.0f};
  std::unique_ptr<RLidar> lidar; // after a load; without points when there is no cloud
  RTrackFile skidMarks;
  RTrackFile trackMaps;
  RTrackFile sunMaps;
  std::vector<RTrackFile> timeOfDayCurves;

  void SetName(const std::string& newName); // before Load
  virtual bool Load();                      // false without "track.ini" (reported)
  // Writes special.ini, traffic.ini and spline.ini as one set. False (reported) with all files as they were.
  virtual bool Save();
  virtual bool CollisionOBB() { return false; }
  // Materials of the scenery whose names match the pattern get the surface. Said when there are none.
  virtual void ApplySurfaceTypeToMaterials(const RSurfaceType& surface, const std::string& pattern);
  virtual void Paint(DOverlay&) {}
  virtual void PaintLines(DOverlay&) const {}

  const std::string& Directory() const override { return trackDir; }
  WorldScene* GetScene() const { return host.scene; } // that shows the scenery; null: nothing is shown
  void GetSurfaceInfo(const DVector3& position, const DVector3& direction, RSurfaceInfo& result) override;
  DVector3 FirstGridPlace() const override { return gridPos[0].from; }

  RTimeLine* GetTimeLine(int i) const; // null out of bounds (reported)
  int GetLastTimeLine() const;         // where a lap or run ends
  // The caller stays below the count, or the table's size for positions.
  RCarPos* GetGridPos(int i) { return &gridPos[static_cast<size_t>(i)]; }
  RCarPos* GetPitPos(int i) { return &pitPos[static_cast<size_t>(i)]; }
  RTrackCam* GetTrackCam(int i) const { return trackCams.At(i)->get(); }
  RWayPoint* GetWayPoint(int i) const { return wayPoints.At(i)->get(); }
  // False when there are too many (reported).
  bool AddTrackCam(std::unique_ptr<RTrackCam> cam);
  void ListCameras(); // and the director takes the first
  bool AddWayPoint(std::unique_ptr<RWayPoint> wayPoint);
  bool AddTrackAudio(std::unique_ptr<RTrackAudio> source);
  // A source of that sample, found in the track's directory or beside the program's own; not yet in the table.
  std::unique_ptr<RTrackAudio> MakeTrackAudio(const std::string& sample) const;
  // Once a frame: the ambient sounds as a listener there hears them.
  void UpdateAudio(const DVector3& listener);

  void LoadPaceNotes();
  bool SavePaceNotes() const; // false when the file couldn't be written (reported)
  bool SaveBestLaps();        // writes only what is marked dirty
  // "special.ini" as it was read; null before a load. Nobody changes it: a save re-reads it.
  const QInfo* Special() const { return special.get(); }

protected:
  // The sections of "surfaces", or one of all defaults. False when one has an unknown type (reported).
  bool LoadSurfaceTypes();
  // Puts the base's three files into the set. False (reported) when there is to be no save.
  bool AddToSave(RSaveSet& set) const;
  // A file that was there and couldn't be read: a save would put nothing in its place, so there will be none.
  void NoteUnreadable(const QInfo& info);
  // What was kept of special.ini is that file again.
  void RereadSpecial();
  void AfterRead(const QInfo& info) const
  {
    if (host.afterRead)
      host.afterRead(info);
  }
  // A file of the track's own directory.
  std::string PathOf(std::string_view leaf) const { return trackDir + "/" + std::string(leaf); }
  bool Setting(std::string_view path, bool otherwise) const;
  float Setting(std::string_view path, float otherwise) const;
  std::string Setting(std::string_view path, const char* otherwise) const;

  RTrackHost host;
  std::unique_ptr<QInfo> special;
  std::unique_ptr<QInfo> bestLapsInfo;
  std::unique_ptr<ROpenArchive> archive; // track.ar, while the track loads

private:
  std::vector<std::string> unreadable;

  bool LoadIdentity();
  void LoadTimeOfDay();
  bool LoadSpecial();
  void LoadBoxes();
  void LoadLidar();
  void LoadPositions();
  void SplitLights(std::string_view names);
  void SetFlag(Flag flag, bool on);
  void LoadLines();
  void LoadSplines();
  void WidenStart();
  void LoadTrackCams();
  void LoadWayPoints();
  void LoadAudio();
  void LoadSky();
  void LoadColorGrade();
  void LoadWeather();
  void LoadMaps();
  void LoadFog();
  void LoadSun();
  void LoadRest();
  void SaveSpecial(QInfo& info) const;
  void SaveLines(QInfo& info) const;
  void SaveStanding(QInfo& info) const;
};

#include "foundation/textinfo.h"
#include "geometry/dgeode.h"
#include "support/recordingsound.h"
#include "support/reportcapture.h"
#include "track/smalltrack.h"

#include <cmath>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// A section with the keys, one a line.
std::string Section(const std::string& name, const std::string& keys)
{
  return name + "\n{\n" + keys + "\n}\n";
}

} // namespace

TEST(SpecialLoad, TakesDefaultsWithoutAFile)
{
  SmallTrack small;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  ASSERT_EQ(1, track->trackCams.Count());
  const RTrackCam& cam = *track->GetTrackCam(0);
  EXPECT_EQ(10, cam.radius);
  EXPECT_EQ(10, cam.zoomFar);
  EXPECT_EQ(0u, cam.flags);
  EXPECT_EQ(10, cam.dst.damping);
  EXPECT_EQ(0, track->gridCount + track->pitCount + track->timeLines.Count() + track->triggerLines.Count());
  EXPECT_EQ(1, track->pitSide);
  EXPECT_EQ(RSun::DEFAULT_POSITION, track->sun->position);
  EXPECT_TRUE(track->sun->enabled);
  EXPECT_EQ(0.001f, track->fog.density);
  EXPECT_EQ(DVector4(0, 0, 0, 1), track->fog.color);
  EXPECT_EQ(0.3f, track->shadowIntensity);
  EXPECT_EQ(20000, track->weather.cloudHeight);
  EXPECT_TRUE(track->environment.wind.present);
  EXPECT_NEAR(-1.1579, track->offTrackVector.z, 0.0001);
  EXPECT_EQ(-200, track->paceCarEndDistance);
  EXPECT_EQ("data/tracks/small/skids.bin", track->skidMarks.path);
  EXPECT_FALSE(track->skidMarks.present);
}

TEST(SpecialLoad, HoldsEachCountToItsTable)
{
  const struct
  {
    const char* section;
    int count;
    int loaded;
    const char* report; // null: silent
  } cases[] = {
      {"grid", 51, 50, nullptr},
      {"grid", -3, 0, nullptr},
      {"pit", 999, 50, nullptr},
      {"timeline", 51, 50, nullptr},
      {"timeline", -1, 0, nullptr},
      {"triggerline", 100, 100, nullptr},
      {"triggerline", 101, 100, "triggerline.count=101, but only 100 can be defined; clamping"},
      {"tcam", 199, 199, nullptr},
      {"tcam", 200, 200, "Track contains too many trackcams (max=200, count=200)"},
      {"tcam", 0, 1, "Track contains no trackcams!"},
      {"tcam", -2, 0, nullptr},
      {"waypoint", 400, 400, "Track contains too many waypoints (max=400, count=400)"},
      {"waypoint", 2147483647, 400, "Track contains too many waypoints (max=400, count=2147483647)"},
      {"audio", 100, 100, "Track contains too many audio points (max=100, count=100)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.section) + " " + std::to_string(c.count));
    SmallTrack small;
    small.Write("special.ini", Section(c.section, "count=" + std::to_string(c.count)));
    ReportCapture reports;
    const auto track = small.Load();
    ASSERT_TRUE(track);
    const std::map<std::string, int> loaded = {
        {"grid", track->gridCount},
        {"pit", track->pitCount},
        {"timeline", track->timeLines.Count()},
        {"triggerline", track->triggerLines.Count()},
        {"tcam", track->trackCams.Count()},
        {"waypoint", track->wayPoints.Count()},
        {"audio", track->audio.Count()},
    };
    EXPECT_EQ(c.loaded, loaded.at(c.section));
    for (const char* text : {"too many", "clamping"})
      EXPECT_EQ(c.report && std::string_view(c.report).find(text) != std::string_view::npos, reports.Contains(text));
    if (c.report) {
      EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    }
  }
}

TEST(SpecialLoad, CorrectsWhatCantBe)
{
  SmallTrack small;
  small.Write("special.ini",
              "env\n{\n  rain=0.5\n  snow=7\n  wind\n  {\n    power=0\n    power_variance=0\n  }\n}\n"
              "environment\n{\n  gravity=9.5\n  rain\n  {\n    grip_factor=1.5\n  }\n  snow\n  {\n    "
              "grip_factor=-0.2\n  }\n}\n"
              "gfx\n{\n  fog\n  {\n    mode=5\n  }\n}\n"
              "tcam\n{\n  count=1\n  cam0\n  {\n    radius=0\n    zoom_close=25\n    flags=13\n"
              "    src\n    {\n      mass=0.000001\n    }\n    keyframes\n    {\n      count=11\n    }\n  }\n}\n");
  ReportCapture reports;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ(0, track->environment.GetRain());
  EXPECT_EQ(1, track->environment.GetSnow());
  EXPECT_FALSE(track->environment.wind.present);
  EXPECT_EQ(9.5f, track->environment.gravity);
  EXPECT_EQ(1, track->environment.rainGripFactor);
  EXPECT_EQ(0, track->environment.snowGripFactor);
  track->environment.SetRain(2);
  EXPECT_EQ(1, track->environment.GetRain());
  EXPECT_EQ(0, track->environment.GetSnow());
  EXPECT_EQ(RFog::EXPONENTIAL, track->fog.mode);
  const RTrackCam& cam = *track->GetTrackCam(0);
  EXPECT_EQ(10, cam.radius);
  EXPECT_EQ(10, cam.zoomEdge);
  EXPECT_EQ(25, cam.zoomClose);
  EXPECT_EQ(9u, cam.flags);
  EXPECT_EQ(1, cam.src.mass);
  for (const char* text : {"Both env.rain and env.snow in the track's special.ini are non-zero - we can only do one at "
                           "a time, ignoring rain",
                           "REnv: no wind available in this track. Particles will not have windinfluence.",
                           "environment.rain.grip_factor (1.50) is too high (maximum=1); capped",
                           "environment.snow.grip_factor (-0.20) is too low (minimum=0); capped",
                           "Track special.ini: gfx.fog.mode out of range 0..2",
                           "tcam.cam0.radius is 0; your camera MUST have a radius; correcting to 10\n",
                           "tcam.cam0.zoom_edge may not be 0; correcting to 10",
                           "RSMD: mass can't be close to 0; boosted to 1 kg (tcam.cam0.src)",
                           "DAnimatedCamera:Load(); more keyframes in file than allocated; capping"})
    EXPECT_TRUE(reports.Contains(text)) << text;
}

TEST(SpecialLoad, ReadsLightsSunAndTime)
{
  SmallTrack small;
  small.Write("special.ini", "gfx\n{\n  lights= dawn\tnoon\n  night=1\n  time=0830\n  sun=1 2 3\n  sun\n  {\n"
                             "    latitude=60.5\n    diffuse=1 0.5 0.25 1\n    intensity=0.7\n  }\n}\n"
                             "endless\n{\n  max\n  {\n    x=10\n  }\n}\n");
  small.Write("skids.bin", "x");
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ((std::array<std::string, 3>{"dawn", "noon", ""}), track->lights);
  EXPECT_EQ(uint32_t(RTrack::NIGHT), track->flags);
  EXPECT_EQ(8, track->sun->hours);
  EXPECT_EQ(30, track->sun->minutes);
  EXPECT_EQ(DVector3(1, 2, 3), track->sun->position);
  EXPECT_EQ(60.5f, track->sun->latitude);
  EXPECT_EQ(DVector4(1, 0.5f, 0.25f, 1), track->sun->diffuse);
  EXPECT_EQ(0.7f, track->skyModel.sunIntensity);
  EXPECT_EQ(DVector3(10, 0, 0), track->endlessSize);
  EXPECT_EQ("", track->skidMarks.path); // only a track with ends has them
}

TEST(SpecialLoad, PutsTheStartLineOnTheRoad)
{
  const struct
  {
    const char* width;
    float from, to;
  } cases[] = {{"", -20, 20}, {"  start_width=1\n", -4, 4}, {"  start_width=2\n", -8, 8}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.width);
    SmallTrack small;
    small.WriteRoad(4);
    small.Write("special.ini", Section("timeline", "count=1\n" + std::string(c.width)));
    const auto track = small.Load();
    const RTimeLine& line = *track->GetTimeLine(0);
    EXPECT_EQ(DVector3(c.from, 0, 0), line.from);
    EXPECT_EQ(DVector3(c.to, 0, 0), line.to);
    EXPECT_FLOAT_EQ((c.to - c.from) * (c.to - c.from), line.lengthSq);
    EXPECT_TRUE(line.IsCrossed({0, 0.5f, -1}, {0, 0.5f, 1}));
  }
}

TEST(SpecialLoad, StaysDefinedWithNumbersThatAreNone)
{
  SmallTrack small;
  small.Write("special.ini",
              "endless\n{\n  min\n  {\n    x=nan\n  }\n  max\n  {\n    x=-inf\n  }\n}\n"
              "timeline\n{\n  count=2\n  line0\n  {\n    from\n    {\n      x=inf\n    }\n  }\n}\n"
              "tcam\n{\n  count=1\n  cam0\n  {\n    radius=nan\n    src\n    {\n      mass=nan\n    }\n  }\n}\n"
              "env\n{\n  rain=nan\n  snow=inf\n}\ngfx\n{\n  time=99zz\n}\n");
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ(0, track->environment.GetRain());
  EXPECT_EQ(1, track->environment.GetSnow());
  EXPECT_EQ(1, track->GetTrackCam(0)->src.mass);
  EXPECT_EQ(-1, track->sun->hours);
  track->GetTrackCam(0)->Follow({1, 2, 3}, {0, 0, 0});
  EXPECT_FALSE(track->GetTimeLine(0)->IsCrossed({0, 0, -1}, {0, 0, 1}));
}

TEST(SpecialLoad, ReadsSurfacesInTheOrderOfTheFile)
{
  SmallTrack small;
  small.Write("special.ini", "surfaces\n{\n  water_track=1\n  surf3\n  {\n    type=KERB\n    grip_factor=0.8\n"
                             "    skidmark=0\n    forbidden=1\n  }\n  surf0\n  {\n    type=road\n  }\n}\n");
  const auto track = small.Load();
  ASSERT_TRUE(track);
  ASSERT_EQ(2, track->surfaces.Count());
  const RSurfaceType& kerb = **track->surfaces.At(0);
  EXPECT_EQ("surf3", kerb.name);
  EXPECT_STREQ("kerb", RSurfaceType::SurfaceTypeName(kerb.type));
  EXPECT_EQ(RSurfaceType::NO_SKID_MARKS | RSurfaceType::FORBIDDEN, kerb.flags);
  EXPECT_EQ(0.8f, kerb.gripFactor);
  EXPECT_EQ(uint32_t(RTrack::WATER_TRACK), track->flags);

  small.Write("special.ini", "");
  ReportCapture reports;
  EXPECT_EQ(1, small.Load()->surfaces.Count());
  EXPECT_TRUE(reports.Contains("No surfaces defined in special.ini; creating stub"));
  std::string many = "surfaces\n{\n";
  for (int i = 0; i < 51; ++i)
    many += "  surf" + std::to_string(i) + "\n  {\n    type=sand\n  }\n";
  small.Write("special.ini", many + "}\n");
  EXPECT_EQ(50, small.Load()->surfaces.Count());
  EXPECT_TRUE(reports.Contains("RTrack:LoadSurfaceTypes(); max (50) reached"));
  small.Write("special.ini", "surfaces\n{\n  surf0\n  {\n    type=Asphalt\n  }\n}\n");
  EXPECT_FALSE(small.Load());
  EXPECT_TRUE(reports.Contains("RTrack:LoadSurfaceTypes(); type 'Asphalt' not recognized"));
}

TEST(SpecialLoad, ReadsMarshalPosts)
{
  SmallTrack small;
  small.Write("special.ini", "marshal_posts\n{\n  count=2147483647\n  post0\n  {\n    actors=9\n    actor0\n    {\n"
                             "      type=4\n      state_green=flag_green\n    }\n    spline_from=2\n    spline_to=5\n"
                             "    user_id=30\n  }\n  post1\n  {\n  }\n}\n");
  ReportCapture reports;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  ASSERT_GE(track->marshalPosts.posts.size(), 2u);
  EXPECT_LE(track->marshalPosts.posts.size(), 3u);
  const RMarshalPost& post = track->marshalPosts.posts[0];
  ASSERT_EQ(6u, post.actors.size());
  EXPECT_EQ("flag_green", post.actors[0].stateNames[2]);
  EXPECT_EQ(0, post.actors[0].type);
  EXPECT_TRUE(reports.Contains("marshal_posts.post0.actor0.type=4 but only 0..3 supported (flashing)"));
  EXPECT_EQ(30, post.userID);
  EXPECT_EQ(5, post.splineTo);
  EXPECT_EQ(1, track->marshalPosts.posts[1].userID);
}

TEST(SpecialLoad, TakesAColourGradeOfTheRightSizeOnly)
{
  const struct
  {
    int width, height;
    const char* path;
  } cases[] = {{256, 16, "data/tracks/small/grade.tga"},
               {16, 256, "data/images/colorgrade_default.tga"},
               {0, 0, "data/images/colorgrade_default.tga"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.width);
    SmallTrack small;
    small.Write("special.ini", Section("gfx", "colorgrade=grade.tga"));
    std::string picture(18, '\0'); // a plain true-colour picture of 24 bits
    picture[2] = 2;
    picture[12] = static_cast<char>(c.width & 255);
    picture[13] = static_cast<char>(c.width >> 8);
    picture[14] = static_cast<char>(c.height & 255);
    picture[15] = static_cast<char>(c.height >> 8);
    picture[16] = 24;
    picture.append(static_cast<size_t>(c.width * c.height * 3), 'x');
    if (c.width > 0)
      small.Write("grade.tga", picture);
    ReportCapture reports;
    EXPECT_EQ(c.path, small.Load()->colorGrade);
    EXPECT_EQ(c.width == 16,
              reports.Contains("Colorgrade texture (data/tracks/small/grade.tga) must be 256x16 (16 maps "
                               "of 16x16) - refusing map"));
  }
}

TEST(TrackAudio, KeepsTheGivenPathAndNamesTheLeaf)
{
  SmallTrack small;
  small.root.Write("data/audio/birds/lark.wav", "");
  const struct
  {
    const char *given, *name, *path;
  } cases[] = {
      {"birds/lark.wav", "lark.wav", "data/audio/birds/lark.wav"},
      {"none.wav", "none.wav", "data/tracks/small/none.wav"},
      {"/etc/passwd", "passwd", ""},
      {"../../../../etc/passwd", "passwd", ""},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    RTrackAudio source;
    source.SetSample(c.given, "data/tracks/small");
    EXPECT_EQ(c.given, source.sample);
    EXPECT_EQ(c.name, source.name) << c.given;
    EXPECT_EQ(c.path, source.path) << c.given;
  }
}

TEST(TrackAudio, IsStartedOnceAndFadesOutsideWithoutAStop)
{
  RecordedSound sound;
  RAudio audio(TextInfo(""));
  SmallTrack small;
  small.Write("special.ini", "audio\n{\n count=3\n source0\n {\n  sample=lark.wav\n  pos=0 0 5\n  radius=10\n }\n"
                             " source1\n {\n  sample=frog.wav\n  pos=0 0 90\n  radius=10\n }\n"
                             " source2\n {\n  sample=../../../etc/x.wav\n  radius=10\n }\n}\n");
  RTrackHost host;
  host.audio = &audio;
  RTrack track(host);
  track.SetName("small");
  ASSERT_TRUE(track.Load());
  ASSERT_EQ(3, track.audio.Count());
  const std::string lark = "data/tracks/small/lark.wav";
  EXPECT_EQ(1, sound.Calls("CreateSound " + lark));
  EXPECT_EQ(2u, sound.sounds.size()) << "what lies outside isn't opened";
  track.UpdateAudio({0, 0, 20});
  EXPECT_TRUE(sound.channels.empty()) << "nobody has come near yet";
  const struct
  {
    float z, volume;
  } steps[] = {{0, 0.75f}, {5, 1}, {14, 0.19f}, {15, 0}, {1000, 0}, {10, 0.75f}};
  for (const auto& step : steps) {
    SCOPED_TRACE(step.z);
    track.UpdateAudio({0, 0, step.z});
    ASSERT_EQ(1u, sound.channels.size());
    const SoundRecord::Channel& channel = *sound.LastOf(lark);
    EXPECT_NEAR(step.volume, channel.volume, 1e-5f);
    EXPECT_EQ(DVector3(0, 0, 5), channel.position);
    EXPECT_EQ(QSoundSystem::LOOP | QSoundSystem::POSITIONED, channel.mode);
    EXPECT_FALSE(channel.paused || channel.ended);
  }
  EXPECT_EQ(uint32_t{RTrackAudio::PLAYING}, (*track.audio.At(0))->flags);
  EXPECT_EQ(0u, (*track.audio.At(1))->flags);
  track.audio.Clear();
  EXPECT_TRUE(sound.channels.begin()->second.ended);
}

TEST(Surfaces, HaveASoundThatWaits)
{
  RecordedSound sound;
  RAudio audio(TextInfo(""));
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n  box\n  {\n    file=box.dof\n  }\n}\n");
  small.Write("special.ini", "surfaces\n{\n  surf0\n  {\n    type=gravel\n    audio\n    {\n      sample=rattle.wav\n"
                             "    }\n  }\n  surf1\n  {\n    type=road\n  }\n}\n");
  RTrackHost host;
  host.audio = &audio;
  RTrackVRML track(host);
  track.SetName("small");
  ASSERT_TRUE(track.Load());
  const std::string rattle = "data/tracks/small/rattle.wav";
  ASSERT_EQ(1u, sound.channels.size()) << "the road has none";
  EXPECT_EQ(0, sound.LastOf(rattle)->volume);
  EXPECT_EQ("track_surface_surf0", (*track.surfaces.At(0))->sound->GetName());
  EXPECT_FALSE((*track.surfaces.At(1))->sound);
  track.surfaces.Clear();
  EXPECT_TRUE(sound.channels.begin()->second.ended);
}

TEST(TrackAudio, IsLouderNearby)
{
  RTrackAudio source;
  source.radius = 10;
  EXPECT_EQ(0, source.Hear({10, 0, 0}));
  EXPECT_EQ(0u, source.flags);
  EXPECT_FLOAT_EQ(0.75f, source.Hear({5, 0, 0}));
  EXPECT_EQ(uint32_t(RTrackAudio::PLAYING), source.flags);
  EXPECT_EQ(1, source.Hear({0, 0, 0}));
}

TEST(SpecialLoad, SurfacesHoldForMaterialsOfTheirPattern)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n  box\n  {\n    file=box.dof\n  }\n}\n");
  const auto load = [&small](const char* first, const char* second) {
    small.Write("special.ini", std::string("surfaces\n{\n  surf0\n  {\n    type=road\n    pattern=") + first +
                                   "\n  }\n  surf1\n  {\n    type=grass\n    pattern=" + second + "\n  }\n}\n");
    return small.Load();
  };
  ReportCapture reports;
  const auto surfaceOf = [](RTrackVRML& track) {
    const RSurfaceType* surface = (*track.nodes.At(0))->Geode()->material.at(0)->surface;
    return surface ? int(surface->type) : -1;
  };
  auto track = load("!nothing*", "none?");
  ASSERT_TRUE(track);
  EXPECT_EQ(0, surfaceOf(*track));
  EXPECT_TRUE(reports.Contains("No surfaces found that match pattern 'none?'"));
  track = load("!nothing*", "*");
  EXPECT_EQ(1, surfaceOf(*track)); // the last one wins
  small.Write("special.ini", "");
  EXPECT_EQ(0, surfaceOf(*small.Load())); // the stand-in is for all
}

TEST(Surfaces, AreUneven)
{
  SmallTrack small;
  small.Write("special.ini",
              "surfaces\n{\n  surf0\n  {\n    type=road\n    road_noise=0.01\n    road_noise_frequency=1 2\n"
              "    road_noise_amplitude=0.5\n    road_noise_threshold=0 9 0 0\n  }\n  surf1\n  {\n    type=kerb\n"
              "    road_noise=0.1\n  }\n  surf2\n  {\n    type=water\n    road_noise=1\n  }\n}\n");
  ReportCapture reports;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_TRUE(reports.Contains(
      "Surfacetype 0 road_noise_frequency and road_noise_amplitude don't have the same parameter count."));
  const RSurfaceType& road = **track->surfaces.At(0);
  float low = 0, high = 0, step = 0;
  for (float x = -300; x < 300; x += 0.17f) {
    const float here = road.NoiseAt(x, 7.3f);
    EXPECT_EQ(here, road.NoiseAt(x, 7.3f));
    step = std::max(step, std::abs(road.NoiseAt(x + 0.01f, 7.3f) - here));
    low = std::min(low, here);
    high = std::max(high, here);
  }
  // The second octave never reaches its threshold: half the amplitude is what is left.
  EXPECT_LT(low, -0.001f);
  EXPECT_GT(high, 0.001f);
  EXPECT_LT(std::max(high, -low), 0.0076f);
  EXPECT_LT(step, 0.0003f); // no jumps between cells
  EXPECT_NEAR(0.1f * (std::sin(1.0f) + std::sin(2.0f)), (*track->surfaces.At(1))->NoiseAt(2, 1), 1e-6f);
  EXPECT_EQ(0, (*track->surfaces.At(2))->NoiseAt(2, 1));
  EXPECT_EQ(0, road.NoiseAt(1e30f, std::numeric_limits<float>::quiet_NaN()));
}

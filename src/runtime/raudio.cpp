#include "runtime/raudio.h"

RAudioProducer::RAudioProducer(std::string newName, std::shared_ptr<QSample> newSample) :
    name(std::move(newName)), sample(std::move(newSample))
{}

RAudioProducer::~RAudioProducer()
{
  Stop();
}

void RAudioProducer::Start(bool loop, float volume)
{
  Stop();
  if (sample)
    channel = sample->Play(QSoundSystem::POSITIONED | (loop ? QSoundSystem::LOOP : 0u), volume, place);
}

void RAudioProducer::Stop()
{
  QSoundSystem* system = QSampleSystem();
  if (system && channel)
    system->Stop(channel);
  channel = 0;
}

void RAudioProducer::SetPosition(const DVector3& position, const DVector3& velocity)
{
  place = position;
  if (QSoundSystem* system = QSampleSystem(); system && channel)
    system->Set3DAttributes(channel, position, velocity);
}

void RAudioProducer::SetVolume(float volume)
{
  if (QSoundSystem* system = QSampleSystem(); system && channel)
    system->SetVolume(channel, volume);
}

void RAudioProducer::SetPitch(float pitch)
{
  if (QSoundSystem* system = QSampleSystem(); system && channel)
    system->SetFrequency(channel, pitch * sample->GetFrequency());
}

RAudio::RAudio(const QInfo& settings)
{
  QSampleCreateSystem(settings, "audio");
}

std::shared_ptr<QSample> RAudio::Sample(const std::string& path)
{
  std::weak_ptr<QSample>& kept = samples[path];
  std::shared_ptr<QSample> sample = kept.lock();
  if (sample)
    return sample;
  sample = std::make_shared<QSample>();
  sample->Load(path);
  kept = sample; // of a file that can't be loaded too: one report is enough
  return sample;
}

std::unique_ptr<RAudioProducer> RAudio::MakeProducer(const std::string& path, const std::string& name)
{
  const std::string leaf = path.substr(path.find_last_of("/\\") + 1); // npos + 1 is 0
  return std::make_unique<RAudioProducer>(name.empty() ? leaf : name, Sample(path));
}

void RAudio::SetListener(const DVector3& position, float rolloff)
{
  QSoundSystem* system = QSampleSystem();
  if (!system)
    return;
  system->Set3DSettings(1.0f, 1.0f, rolloff);
  system->Set3DListenerAttributes(position, DVector3(0.0f), DVector3(0, 0, 1), DVector3(0, 1, 0));
  system->Update();
}

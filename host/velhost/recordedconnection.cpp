#include "host/velhost/recordedconnection.h"

#include <optional>

#include "host/base/hosterror.h"
#include "host/base/storedbytes.h"
#include "host/base/text.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/bmc/record/image.h"
#include "host/bmc/record/replay.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

/// Reads the recording and makes what answers from it.
template <typename TAnswering>
std::unique_ptr<TAnswering> OpenRecording(const std::string& path, TInputs& inputs) {
  TInputReader reader(inputs, {"the recording", "--sp", EFileKind::kRecording}, {path});
  const TStoredBytes recording = reader.Open(path, kLargestRecording, kLargestRecordingOfAPipe);
  return std::make_unique<TAnswering>(path, recording, &reader);
}

/// What does not depend on how a recording answers.
class TRecordedConnection : public IServerConnection {
 public:
  TServerFacts Facts() const override {
    const TRecordingHeader& header = *Recording();
    if (!header.run) return {.recorded = header.started};
    const TRecordedSource& source = header.run->source;
    return {source.isSimulated, header.started, source.serialNumber, source.uuid};
  }

 protected:
  static void Begin(const TCheckedRecording& recording) {
    if (recording.HasHeader() && !recording.Header().run) {
      Say("warning: " + SafeText(recording.Path()) +
          ": a version 1 recording does not say whether its service processor was simulated");
    }
    ApplyUtcOffset(recording.Header().utcOffsetMinutes);
  }
};

class TReplayConnection : public TRecordedConnection {
 public:
  TReplayConnection(const std::string& path, bool timing, TInputs& inputs)
      : replay_(OpenRecording<TReplay>(path, inputs)) {
    replay_->SetTiming(timing);
    Begin(replay_->Recording());
  }
  IServiceProcessor& ServiceProcessor() override { return *replay_; }
  IHostEnvironment& Environment() override { return *replay_; }
  const TRecordingHeader* Recording() const override { return &replay_->Recording().Header(); }
  std::string Mismatch() const override {
    const std::string text = replay_->Mismatch().value_or(std::string());
    return text.substr(0, text.find('\n'));
  }
  void CheckAfterwards() override {
    if (const auto warning = replay_->CutWarning()) SayDiagnostics({*warning});
    if (!replay_->Mismatch()) return;
    Say(*replay_->Mismatch());
    throw THostError(EFailure::kMalformed,
                     "the collection differs from the recorded one: use the same schema, "
                     "classes and machine type");
  }

 private:
  std::unique_ptr<TReplay> replay_;
};

class TImageConnection : public TRecordedConnection {
 public:
  TImageConnection(const std::string& path, TInputs& inputs) : image_(OpenRecording<TImage>(path, inputs)) {
    Begin(image_->Recording());
  }
  IServiceProcessor& ServiceProcessor() override { return *image_; }
  IHostEnvironment& Environment() override { return *image_; }
  const TRecordingHeader* Recording() const override { return &image_->Recording().Header(); }
  void CheckAfterwards() override {
    if (const auto warning = image_->Recording().CutWarning()) SayDiagnostics({*warning});
  }

 private:
  std::unique_ptr<TImage> image_;
};

}  // namespace

std::unique_ptr<IServerConnection> ConnectReplay(const std::string& path, bool timing, TInputs& inputs) {
  return std::make_unique<TReplayConnection>(path, timing, inputs);
}

std::unique_ptr<IServerConnection> ConnectImage(const std::string& path, TInputs& inputs) {
  return std::make_unique<TImageConnection>(path, inputs);
}

std::vector<std::string> AnotherSchemaWarnings(const TRecordingHeader* recording, const std::string& schemaSha256) {
  if (recording == nullptr || !recording->run || recording->run->schemaSha256.empty()) return {};
  if (recording->run->schemaSha256 == schemaSha256) return {};
  return {"the recording was made with another schema"};
}

}  // namespace velhost

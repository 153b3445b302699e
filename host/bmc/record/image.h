// A recording as an image of its server: it answers by what is asked, in whatever order.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/bmc/record/recordingindex.h"
#include "host/bmc/record/storagehandles.h"
#include "host/model/hostservices.h"

namespace velhost {

/// What an image keeps in memory of a recording of any size.
struct TImageLimits {
  std::size_t lines = 20'000'000;  ///< of 16 bytes each; the largest storage areas are read in a fifth of that
  std::size_t handles = 100'000;
};

/// An exchange or clock reading that was recorded several times is answered in recorded order, the last answer staying.
/// A read of a storage area is answered from the area that its handle was last given for by open, by offset and count:
/// what the handle was at the time of the recording makes no difference. If the handle was not given by open, a read is
/// a request like any other.
///
/// As an environment, it supplies the recorded machine type and clock readings; without any, the recording's start.
class VELHOST_API TImage : public IServiceProcessor, public IHostEnvironment {
 public:
  /// Checks the whole recording as TCheckedRecording does, and keeps where its lines are; they are read again when they
  /// are needed. Throws TDiagnosedError (kTooLarge) if that would exceed the limits.
  TImage(const std::string& path, const TStoredBytes& recording, ISourceReader* reader = nullptr,
         const TImageLimits& limits = {});
  ~TImage() override;
  TImage(const TImage&) = delete;
  TImage& operator=(const TImage&) = delete;

  const TCheckedRecording& Recording() const { return recording_; }

  TDiscovery Discover() override { return recording_.Header().discovery; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;
  /// kLost for an exchange that was recorded without an answer.
  ENoAnswer WhyNoAnswer() const override { return whyNoAnswer_; }

  std::string MachineType() override { return recording_.Header().machineType; }
  TCIMDateTime LocalTime() override;

 private:
  void OnLine(const TRecordedLine& line, const TLinePlace& place);
  std::optional<TRecordedLine> Next(const TRecordedLine& asked, const std::optional<std::string>& area);
  std::optional<TRecordedLine> LineAt(const TLinePlace& place) const;

  TStoredBytes bytes_;
  TRecordingIndex index_;
  TStorageHandles handles_;  // while the recording is checked, those that it gives; then those given by this image
  TCheckedRecording recording_;
  ENoAnswer whyNoAnswer_ = ENoAnswer::kNotRecorded;
};

}  // namespace velhost

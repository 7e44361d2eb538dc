// The platform port: a thin C++ mirror of the media-capture object model the library touches.
//
// Everything above this header is portable. Every operation is synchronous from the core's
// point of view: an adapter waits for the platform's asynchronous work on the calling thread.
// A platform failure is thrown as PlatformError (an HRESULT and the platform's message); calls
// that the library treats step by step return an hresult instead. Values a platform may leave
// missing are std::optional or null pointers, so the core can log exactly what was missing.
//
// Threading: objects are created and used on the request thread, except where an operation
// says it is also called from frame-arrived or event threads. Event handlers are called on the
// platform's own threads.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/hresult.h"

namespace vexcap::platform {

// ---- Values --------------------------------------------------------------------------------

struct Guid {
  std::uint32_t data1 = 0;
  std::uint16_t data2 = 0;
  std::uint16_t data3 = 0;
  std::uint8_t data4[8] = {};
  friend bool operator==(const Guid& a, const Guid& b);
  friend bool operator!=(const Guid& a, const Guid& b) { return !(a == b); }
};

// Enumerations carry the platform's own values.
enum class SourceKind : std::int32_t { Custom = 0, Color = 1, Infrared = 2, Depth = 3, Audio = 4, Image = 5, Metadata = 6 };
enum class StreamType : std::int32_t { VideoPreview = 0, VideoRecord = 1, Audio = 2, Photo = 3, Metadata = 4 };
enum class SharingMode : std::int32_t { ExclusiveControl = 0, SharedReadOnly = 1 };
enum class StreamingCaptureMode : std::int32_t { AudioAndVideo = 0, Audio = 1, Video = 2 };
enum class MemoryPreference : std::int32_t { Auto = 0, Cpu = 1 };
enum class AcquisitionMode : std::int32_t { Realtime = 0, Buffered = 1 };
enum class ReaderStartStatus : std::int32_t { Success = 0, UnknownFailure = 1, DeviceNotAvailable = 2, OutputFormatNotSupported = 3, ExclusiveControlNotAvailable = 4 };
enum class GetPropertyStatus : std::int32_t { Success = 0, UnknownFailure = 1, NotSupported = 2, DeviceNotAvailable = 3, MaxPropertyValueSizeTooSmall = 4, MaxPropertyValueSizeRequired = 5 };
enum class SetPropertyStatus : std::int32_t { Success = 0, UnknownFailure = 1, NotSupported = 2, InvalidValue = 3, DeviceNotAvailable = 4, NotInControl = 5 };
enum class ExclusiveControlStatus : std::int32_t { ExclusiveControlAvailable = 0, SharedReadOnlyAvailable = 1 };
enum class PixelFormat : std::int32_t { Unknown = 0, Rgba16 = 12, Rgba8 = 30, Gray16 = 57, Gray8 = 62, Bgra8 = 87, Nv12 = 103, P010 = 104, Yuy2 = 107 };
enum class InfraredTorchMode : std::int32_t { Off = 0, On = 1, AlternatingFrameIllumination = 2 };
enum class Panel : std::int32_t { Unknown = 0, Front = 1, Back = 2, Top = 3, Bottom = 4, Left = 5, Right = 6 };
enum class DeviceInformationKind : std::int32_t { Unknown = 0, DeviceInterface = 1, DeviceContainer = 2, Device = 3, DeviceInterfaceClass = 4, AssociationEndpoint = 5, AssociationEndpointContainer = 6, AssociationEndpointService = 7, DevicePanel = 8 };

// The platform's failure: what its exceptions carry.
class PlatformError : public std::exception {
 public:
  PlatformError(hresult code, std::wstring message);
  hresult code() const noexcept { return code_; }
  const std::wstring& message() const noexcept { return message_; }
  const char* what() const noexcept override { return "platform error"; }

 private:
  hresult code_;
  std::wstring message_;
};

// Registration of an event handler; 0 is never a valid token.
using EventToken = std::int64_t;

// ---- Device information ----------------------------------------------------------------------

struct Pairing {
  bool is_paired = false;
  bool can_pair = false;
};

struct DeviceInformation {
  std::optional<std::wstring> id;
  std::optional<std::wstring> name;
  bool is_default = false;
  bool is_enabled = true;
  DeviceInformationKind kind = DeviceInformationKind::DeviceInterface;
  std::optional<Pairing> pairing;
  std::optional<Panel> enclosure_panel;  // EnclosureLocation.Panel; missing when no location
};

struct DeviceInformationUpdate {
  std::wstring id;
};

// ---- Source groups ---------------------------------------------------------------------------

struct SourceInfo {
  std::optional<std::wstring> id;
  SourceKind kind = SourceKind::Custom;
  StreamType stream_type = StreamType::VideoPreview;
  std::shared_ptr<const DeviceInformation> device_information;  // null when missing
};

class SourceGroup {
 public:
  virtual ~SourceGroup() = default;
  virtual std::optional<std::wstring> id() const = 0;
  virtual std::optional<std::wstring> display_name() const = 0;
  // Missing list: std::nullopt.
  virtual std::optional<std::vector<SourceInfo>> source_infos() const = 0;
  // IClosable, when the object has it; a no-op otherwise.
  virtual void close() = 0;
};

// ---- Formats ---------------------------------------------------------------------------------

class FrameFormat {
 public:
  virtual ~FrameFormat() = default;
  virtual std::wstring major_type() const = 0;  // "Video", ...
  virtual std::wstring subtype() const = 0;     // "NV12", "GRAY8", "L8", "YUY2", "RGB24", ...
  virtual std::uint32_t width() const = 0;
  virtual std::uint32_t height() const = 0;
  virtual std::uint32_t frame_rate_numerator() const = 0;
  virtual std::uint32_t frame_rate_denominator() const = 0;
  // The MF_MT_VIDEO_ROTATION property of the format, rendered as text; nullopt when absent.
  virtual std::optional<std::wstring> rotation_text() const = 0;
};

// ---- Typed controls (each may be absent: the getters below return null) ----------------------

class ExposureControl {
 public:
  virtual ~ExposureControl() = default;
  virtual bool supported() = 0;
  virtual bool auto_enabled() = 0;
  virtual std::int64_t min() = 0;  // 100 ns units
  virtual std::int64_t max() = 0;
  virtual std::int64_t step() = 0;
  virtual std::int64_t value() = 0;
  virtual void set_value(std::int64_t value) = 0;  // SetValueAsync, waited for
  virtual void set_auto(bool enabled) = 0;         // SetAutoAsync, waited for
};

class IsoSpeedControl {
 public:
  virtual ~IsoSpeedControl() = default;
  virtual bool supported() = 0;
  virtual std::uint32_t min() = 0;  // IIsoSpeedControl2
  virtual std::uint32_t max() = 0;
  virtual std::uint32_t value() = 0;
  virtual void set_value(std::uint32_t value) = 0;  // SetValueAsync, waited for
};

class TorchControl {
 public:
  virtual ~TorchControl() = default;
  virtual bool supported() = 0;
  virtual bool power_supported() = 0;
  virtual bool enabled() = 0;
  virtual void set_enabled(bool enabled) = 0;
  virtual float power_percent() = 0;
  virtual void set_power_percent(float percent) = 0;
};

class InfraredTorchControl {
 public:
  virtual ~InfraredTorchControl() = default;
  virtual bool is_supported() = 0;
  virtual InfraredTorchMode current_mode() = 0;
  virtual void set_current_mode(InfraredTorchMode mode) = 0;
  virtual std::int32_t min_power() = 0;
  virtual std::int32_t max_power() = 0;
  virtual std::int32_t power_step() = 0;
  virtual std::int32_t power() = 0;
  virtual void set_power(std::int32_t power) = 0;
};

// ---- Frame sources ---------------------------------------------------------------------------

struct PropertyValue {
  std::wstring type_name;               // how the platform names the value's type
  std::optional<std::vector<std::uint8_t>> bytes;  // nullopt when the value is no byte array
};

struct GetPropertyResult {
  GetPropertyStatus status = GetPropertyStatus::UnknownFailure;
  std::optional<PropertyValue> value;
};

// MediaFrameSourceController and the controls reached from its VideoDeviceController.
class SourceController {
 public:
  virtual ~SourceController() = default;
  // GetPropertyByExtendedIdAsync(id, max size), waited for.
  virtual GetPropertyResult get_property_by_extended_id(const std::vector<std::uint8_t>& id,
                                                        std::optional<std::uint32_t> max_size) = 0;
  // SetPropertyByExtendedIdAsync(id, value), waited for.
  virtual SetPropertyStatus set_property_by_extended_id(const std::vector<std::uint8_t>& id,
                                                        const std::vector<std::uint8_t>& value) = 0;
  virtual std::shared_ptr<ExposureControl> exposure_control() = 0;
  virtual std::shared_ptr<IsoSpeedControl> iso_speed_control() = 0;
  virtual std::shared_ptr<TorchControl> torch_control() = 0;
  virtual std::shared_ptr<InfraredTorchControl> infrared_torch_control() = 0;
};

class FrameSource {
 public:
  virtual ~FrameSource() = default;
  virtual SourceInfo info() = 0;
  virtual std::vector<std::shared_ptr<FrameFormat>> supported_formats() = 0;
  virtual std::shared_ptr<FrameFormat> current_format() = 0;  // null when none
  virtual void set_format(const std::shared_ptr<FrameFormat>& format) = 0;  // SetFormatAsync, waited for
  virtual std::shared_ptr<SourceController> controller() = 0;
  // The device's exclusive-control status as the platform reports it now. The raw value is
  // kept: the core tests for values beyond the two named ones.
  virtual ExclusiveControlStatus exclusive_control_status() = 0;
};

// ---- Pixels ----------------------------------------------------------------------------------

struct PlaneDescription {
  std::int32_t start_index = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t stride = 0;
};

// A bitmap buffer locked for reading (LockBuffer + CreateReference + byte access).
class LockedBitmap {
 public:
  virtual ~LockedBitmap() = default;
  virtual std::int32_t plane_count() = 0;
  virtual PlaneDescription plane(std::int32_t index) = 0;
  virtual const std::uint8_t* data() = 0;  // IMemoryBufferByteAccess::GetBuffer
  virtual std::uint32_t capacity() = 0;
};

class Bitmap {
 public:
  virtual ~Bitmap() = default;
  virtual PixelFormat pixel_format() = 0;
  virtual std::int32_t pixel_width() = 0;
  virtual std::int32_t pixel_height() = 0;
  virtual std::shared_ptr<Bitmap> convert(PixelFormat format) = 0;  // SoftwareBitmap::Convert
  virtual std::unique_ptr<LockedBitmap> lock_for_read() = 0;
};

// Result of reaching a buffer's raw bytes: the interface query and the pointer read each have
// their own result.
struct ByteAccess {
  hresult query_result = HR_OK;
  hresult get_result = HR_OK;
  std::uint8_t* data = nullptr;
};

// Windows.Storage.Streams buffer.
class Buffer {
 public:
  virtual ~Buffer() = default;
  virtual std::uint32_t length() = 0;
  virtual void set_length(std::uint32_t length) = 0;
  virtual std::uint32_t capacity() = 0;
  virtual ByteAccess byte_access() = 0;  // IBufferByteAccess
  virtual void close() = 0;
};

// The capture-metadata chain behind one frame: each step with its own result, the first
// failing step ends the chain (later results stay HR_OK and mean "not reached").
struct IlluminationRead {
  hresult get_service = HR_OK;        // query for IMFGetService
  hresult get_sample = HR_OK;         // GetService(MF_WRAPPED_SAMPLE_SERVICE, IMFSample)
  hresult get_capture_metadata = HR_OK;  // GetUnknown(MFSampleExtension_CaptureMetadata)
  hresult get_illumination = HR_OK;   // GetUINT64(MF_CAPTURE_METADATA_FRAME_ILLUMINATION)
  std::uint64_t illumination = 0;
};

class Frame {
 public:
  virtual ~Frame() = default;
  virtual std::int64_t system_relative_time() = 0;  // 100 ns units
  virtual std::shared_ptr<FrameFormat> format() = 0;
  virtual std::shared_ptr<Bitmap> software_bitmap() = 0;  // VideoMediaFrame's bitmap; null if none
  virtual std::shared_ptr<Buffer> buffer() = 0;           // BufferMediaFrame's buffer; null if none
  // Bitmap built from the frame's buffer (the buffer-only path), waited for; null if none.
  virtual std::shared_ptr<Bitmap> bitmap_from_buffer() = 0;
  virtual IlluminationRead read_illumination() = 0;
  virtual void close() = 0;
};

// ---- Readers and capture sessions ------------------------------------------------------------

class FrameReader {
 public:
  // Called on a platform thread. Returning HR_DISCONNECTED drops the handler, as the
  // platform's event source does when a delegate fails that way.
  using FrameArrivedHandler = std::function<hresult(FrameReader& sender)>;

  virtual ~FrameReader() = default;
  virtual EventToken add_frame_arrived(FrameArrivedHandler handler) = 0;
  virtual void remove_frame_arrived(EventToken token) = 0;
  virtual ReaderStartStatus start() = 0;  // StartAsync, waited for
  virtual void stop() = 0;                // StopAsync, waited for
  virtual void close() = 0;
  virtual void set_acquisition_mode(AcquisitionMode mode) = 0;
  // The newest frame, or null when none is waiting. Also called on frame-arrived threads.
  virtual std::shared_ptr<Frame> try_acquire_latest_frame() = 0;
};

struct CaptureSettings {
  std::shared_ptr<SourceGroup> source_group;
  SharingMode sharing_mode = SharingMode::SharedReadOnly;
  StreamingCaptureMode streaming_capture_mode = StreamingCaptureMode::Video;
  MemoryPreference memory_preference = MemoryPreference::Cpu;
};

struct CaptureFailure {
  hresult code = HR_OK;
  std::wstring message;
};

struct ExclusiveControlChange {
  std::wstring device_id;
  ExclusiveControlStatus status = ExclusiveControlStatus::ExclusiveControlAvailable;
};

// One MediaCapture instance. Agile: its events fire on platform threads.
class Capture {
 public:
  using FailedHandler = std::function<void(const CaptureFailure&)>;
  using ExclusiveControlHandler = std::function<void(const ExclusiveControlChange&)>;

  virtual ~Capture() = default;
  virtual void initialize(const CaptureSettings& settings) = 0;  // InitializeAsync, waited for
  virtual std::vector<std::shared_ptr<FrameSource>> frame_sources() = 0;  // platform order
  virtual void close_frame_sources() = 0;  // closes the FrameSources collection where closable
  // CreateFrameReaderAsync, waited for; with a subtype ("NV12") or without.
  virtual std::shared_ptr<FrameReader> create_frame_reader(
      const std::shared_ptr<FrameSource>& source, const std::optional<std::wstring>& subtype) = 0;
  virtual EventToken add_failed(FailedHandler handler) = 0;
  virtual void remove_failed(EventToken token) = 0;
  virtual EventToken add_exclusive_control_status_changed(ExclusiveControlHandler handler) = 0;
  virtual void remove_exclusive_control_status_changed(EventToken token) = 0;
  // The Media Foundation shutdown test: nullopt when the object is no IMFShutdown, else the
  // result of its Shutdown call.
  virtual std::optional<hresult> shutdown_if_supported() = 0;
  // IClosable::Close: the session is released at once (exclusive control is free the moment
  // this returns); the object answers nothing afterwards. Releasing without it leaves the
  // teardown to the platform's own threads, some time later.
  virtual void close() = 0;
};

// ---- Kernel streaming (Media Foundation device sources) --------------------------------------

class Attributes {
 public:
  virtual ~Attributes() = default;
  virtual hresult set_guid(const Guid& key, const Guid& value) = 0;
  virtual hresult set_string(const Guid& key, const std::wstring& value) = 0;
};

class DeviceActivate {
 public:
  virtual ~DeviceActivate() = default;
  // MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE_VIDCAP_SYMBOLIC_LINK
  virtual hresult symbolic_link(std::wstring& link) = 0;
};

// IKsControl::KsProperty: the request is built as bytes by the core (KSPROPERTY / KSP_NODE).
class KsControl {
 public:
  virtual ~KsControl() = default;
  virtual hresult property(const std::uint8_t* request, std::uint32_t request_size,
                           std::uint8_t* data, std::uint32_t data_size,
                           std::uint32_t* bytes_returned) = 0;
};

class KsTopology {
 public:
  virtual ~KsTopology() = default;
  virtual hresult node_count(std::uint32_t* count) = 0;
  virtual hresult node_type(std::uint32_t index, Guid* type) = 0;
};

// IMFMediaSource created from a symbolic link.
class DeviceSource {
 public:
  virtual ~DeviceSource() = default;
  virtual hresult shutdown() = 0;
  virtual hresult query_ks_control(std::shared_ptr<KsControl>& control) = 0;
  virtual hresult query_topology(std::shared_ptr<KsTopology>& topology) = 0;
};

// ---- Device watcher --------------------------------------------------------------------------

class DeviceWatcher {
 public:
  using AddedHandler = std::function<void(const DeviceInformation&)>;
  using UpdateHandler = std::function<void(const DeviceInformationUpdate&)>;

  virtual ~DeviceWatcher() = default;
  virtual EventToken add_added(AddedHandler handler) = 0;
  virtual EventToken add_removed(UpdateHandler handler) = 0;
  virtual EventToken add_updated(UpdateHandler handler) = 0;
  virtual void remove_added(EventToken token) = 0;
  virtual void remove_removed(EventToken token) = 0;
  virtual void remove_updated(EventToken token) = 0;
  virtual void start() = 0;
  virtual void stop() = 0;
};

// ---- Runtime ---------------------------------------------------------------------------------

// The two runtimes the request thread starts: each call returns the platform's result.
class Runtime {
 public:
  virtual ~Runtime() = default;
  virtual hresult ro_initialize_multithreaded() = 0;
  virtual void ro_uninitialize() = 0;
  virtual hresult mf_startup() = 0;
  virtual hresult mf_shutdown() = 0;
};

// ---- The platform ----------------------------------------------------------------------------

class Platform {
 public:
  virtual ~Platform() = default;

  virtual Runtime& runtime() = 0;

  // MediaFrameSourceGroup::FindAllAsync, waited for. Entries may be null.
  virtual std::vector<std::shared_ptr<SourceGroup>> find_all_source_groups() = 0;
  virtual std::shared_ptr<Capture> create_capture() = 0;
  // DeviceInformation watcher on the MediaFrameSourceGroup device selector.
  virtual std::unique_ptr<DeviceWatcher> create_source_group_watcher() = 0;

  // Imaging.
  virtual std::shared_ptr<Buffer> create_buffer(std::uint32_t capacity) = 0;
  // SoftwareBitmap::CreateCopyFromBuffer; null when no bitmap results.
  virtual std::shared_ptr<Bitmap> create_bitmap_copy_from_buffer(Buffer& buffer, PixelFormat format,
                                                                 std::int32_t width,
                                                                 std::int32_t height) = 0;

  // Media Foundation device sources.
  virtual hresult create_attributes(std::uint32_t initial_size,
                                    std::shared_ptr<Attributes>& attributes) = 0;
  virtual hresult enum_device_sources(Attributes& attributes,
                                      std::vector<std::shared_ptr<DeviceActivate>>& activates) = 0;
  virtual hresult create_device_source(Attributes& attributes,
                                       std::shared_ptr<DeviceSource>& source) = 0;

  // The system's text for a message number (FormatMessageW from the system); nullopt if none.
  virtual std::optional<std::wstring> system_message(std::uint32_t message_id) = 0;
};

// The process's platform, chosen when the library is built.
Platform& current();

}  // namespace vexcap::platform

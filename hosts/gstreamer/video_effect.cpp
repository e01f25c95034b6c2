#include "hosts/gstreamer/video_effect.h"

#include <fmt/format.h>
#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <vector>

#include "hostkit/param_track.h"
#include "hosts/gstreamer/effect_runner.h"
#include "hosts/gstreamer/frame_clock.h"
#include "hosts/gstreamer/mapped_frame.h"
#include "hosts/gstreamer/properties.h"

namespace kvx {

namespace {

constexpr char kCaps[] =
    "video/x-raw, format = (string) { BGRA, BGRx }, width = (int) [ 1, 16384 ], height = (int) [ 1, 16384 ], "
    "framerate = (fraction) [ 0, max ]";
constexpr gsize kRowAlignment = 63;  // a mask

// What an element type is made from.
struct EffectClass {
  const EffectInfo* effect = nullptr;
  std::vector<const ParamInfo*> params;  // property 2 and on
};

// Beyond the settings, everything belongs to the streaming thread.
struct State {
  explicit State(const EffectInfo& effect) : tracks(effect, {}, 100) {}

  Settings settings;
  ParamTracks tracks;  // the defaults, and the parameter that is fed with the time
  EffectRunner runner;
  FrameClock clock;
  FrameRate rate;
  FramePlace place;
  FrameValues values;
  bool asksLength = true;

  void Restart() {
    RestartEffect();
    clock.Restart();
  }
  void RestartEffect() {
    runner.Restart();
    place = {};
    asksLength = true;
  }
};

struct VideoEffect {
  GstVideoFilter parent;
  State* state;
};

struct VideoEffectClass {
  GstVideoFilterClass parent;
  const EffectClass* row;
};

GstVideoFilterClass* parentClass = nullptr;

const EffectClass& RowOf(gpointer element) {
  return *reinterpret_cast<VideoEffectClass*>(G_OBJECT_GET_CLASS(element))->row;
}

State& StateOf(gpointer element) {
  return *static_cast<VideoEffect*>(element)->state;
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec*) {
  Settings& settings = StateOf(object).settings;
  if (id == 1) {
    settings.SetOpacity(g_value_get_double(value));
  } else {
    settings.Set(*RowOf(object).params.at(id - 2), value);
  }
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec*) {
  const Settings& settings = StateOf(object).settings;
  if (id == 1) {
    g_value_set_double(value, settings.Opacity());
  } else {
    settings.Get(*RowOf(object).params.at(id - 2), value);
  }
}

void InitInstance(GTypeInstance* instance, gpointer itsClass) {
  reinterpret_cast<VideoEffect*>(instance)->state = new State(*static_cast<VideoEffectClass*>(itsClass)->row->effect);
}

void Finalize(GObject* object) {
  delete reinterpret_cast<VideoEffect*>(object)->state;
  G_OBJECT_CLASS(parentClass)->finalize(object);
}

GstStateChangeReturn ChangeState(GstElement* element, GstStateChange change) {
  State& state = StateOf(element);
  if (change == GST_STATE_CHANGE_NULL_TO_READY) {
    try {
      state.runner.Open(*RowOf(element).effect);
    } catch (const std::exception& error) {
      GST_ELEMENT_ERROR(element, LIBRARY, INIT, ("%s", error.what()), (nullptr));
      return GST_STATE_CHANGE_FAILURE;
    }
  }
  const GstStateChangeReturn result = GST_ELEMENT_CLASS(parentClass)->change_state(element, change);
  if (change == GST_STATE_CHANGE_READY_TO_NULL) state.runner.Close();
  return result;
}

gboolean Start(GstBaseTransform* base) {
  StateOf(base).Restart();
  return TRUE;
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps*, GstVideoInfo* info, GstCaps*, GstVideoInfo*) {
  State& state = StateOf(filter);
  const bool isFirst = !filter->in_info.finfo;
  if (isFirst || !gst_video_info_is_equal(info, &filter->in_info)) state.Restart();
  state.rate = {GST_VIDEO_INFO_FPS_N(info), GST_VIDEO_INFO_FPS_D(info)};
  return TRUE;
}

// A seek shows as a segment of its own, with a flush or without. A length that has become known does not.
bool IsSameStretch(const GstSegment& a, const GstSegment& b) {
  return a.format == b.format && a.rate == b.rate && a.applied_rate == b.applied_rate && a.base == b.base &&
         a.start == b.start && a.time == b.time;
}

gboolean SinkEvent(GstBaseTransform* base, GstEvent* event) {
  if (GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP) {
    StateOf(base).Restart();
  } else if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event, &segment);
    if (!IsSameStretch(*segment, base->segment)) StateOf(base).Restart();
  }
  return GST_BASE_TRANSFORM_CLASS(parentClass)->sink_event(base, event);
}

// Where the row of a frame begins decides which pixels are blended four at a time, so that aligned frames are rendered
// in place and others by way of a copy.
gboolean DecideAllocation(GstBaseTransform* base, GstQuery* query) {
  GstAllocator* allocator = nullptr;
  GstAllocationParams params;
  gst_allocation_params_init(&params);
  if (gst_query_get_n_allocation_params(query) > 0) {
    gst_query_parse_nth_allocation_param(query, 0, &allocator, &params);
    params.align |= kRowAlignment;
    gst_query_set_nth_allocation_param(query, 0, allocator, &params);
    if (allocator) gst_object_unref(allocator);
  } else {
    params.align |= kRowAlignment;
    gst_query_add_allocation_param(query, nullptr, &params);
  }
  return GST_BASE_TRANSFORM_CLASS(parentClass)->decide_allocation(base, query);
}

// Whatever the size of the buffer that comes, with padding or cropped, a plain frame goes.
gboolean TransformSize(GstBaseTransform*, GstPadDirection, GstCaps*, gsize, GstCaps* othercaps, gsize* othersize) {
  GstVideoInfo info;
  if (!gst_video_info_from_caps(&info, othercaps)) return FALSE;
  *othersize = info.size;
  return TRUE;
}

// A crop has been done, and does not hold for the frame that goes.
gboolean TransformMeta(GstBaseTransform* base, GstBuffer* out, GstMeta* meta, GstBuffer* in) {
  if (meta->info->api == GST_VIDEO_CROP_META_API_TYPE) return FALSE;
  return GST_BASE_TRANSFORM_CLASS(parentClass)->transform_meta(base, out, meta, in);
}

// The clip's length in frames; 0 if nobody knows.
int64_t AskLength(GstBaseTransform* base, const FrameRate& rate) {
  GstPad* pad = GST_BASE_TRANSFORM_SINK_PAD(base);
  gint64 length = 0;
  if (rate.IsKnown() && gst_pad_peer_query_duration(pad, GST_FORMAT_TIME, &length) && length > 0) {
    return rate.FrameAt(static_cast<GstClockTime>(length));
  }
  return gst_pad_peer_query_duration(pad, GST_FORMAT_DEFAULT, &length) && length > 0 ? length : 0;
}

void BeforeTransform(GstBaseTransform* base, GstBuffer* buffer) {
  State& state = StateOf(base);
  const bool isTimed = base->segment.format == GST_FORMAT_TIME && GST_BUFFER_PTS_IS_VALID(buffer);
  GstClockTime runningTime = GST_CLOCK_TIME_NONE;
  if (isTimed) {
    const GstClockTime time = GST_BUFFER_PTS(buffer);
    runningTime = gst_segment_to_running_time(&base->segment, GST_FORMAT_TIME, time);
    const GstClockTime streamTime = gst_segment_to_stream_time(&base->segment, GST_FORMAT_TIME, time);
    if (GST_CLOCK_TIME_IS_VALID(streamTime)) gst_object_sync_values(GST_OBJECT(base), streamTime);
  }
  const FrameClock::Moment moment = state.clock.Next(runningTime, state.rate);
  if (moment.steppedBack) state.RestartEffect();
  if (state.asksLength) {
    state.place.totalFrames = AskLength(base, state.rate);
    state.asksLength = state.place.totalFrames == 0;
  }
  state.place.frame = moment.frame;
  state.values = state.tracks.At(moment.frame, moment.milliseconds);
  state.settings.ApplyTo(state.values);

  const bool isPassedOn = state.values.numbers[kOpacityName] == 0;
  if (isPassedOn) state.runner.Restart();  // it will not have seen this frame
  if (isPassedOn != static_cast<bool>(gst_base_transform_is_passthrough(base))) {
    gst_base_transform_set_passthrough(base, isPassedOn);
    gst_base_transform_reconfigure_src(base);
  }
}

GstFlowReturn Transform(GstBaseTransform* base, GstBuffer* in, GstBuffer* out) {
  State& state = StateOf(base);
  const auto* filter = reinterpret_cast<const GstVideoFilter*>(base);
  try {
    const MappedFrame source(filter->in_info, in, GST_MAP_READ);
    const MappedFrame result(filter->out_info, out, GST_MAP_WRITE);
    const auto [data, width, height, stride] = source.View();
    const bool isOpaque = GST_VIDEO_INFO_FORMAT(&filter->in_info) == GST_VIDEO_FORMAT_BGRx;
    state.runner.Render({data, width, height, stride}, isOpaque, result.View(), state.place, state.values);
  } catch (const std::exception& error) {
    GST_ELEMENT_ERROR(base, STREAM, FAILED, ("%s", error.what()), (nullptr));
    return GST_FLOW_ERROR;
  }
  return GST_FLOW_OK;
}

// The base class takes a filter without this operation for one that works in place. It is never called: Transform
// stands before it, because the base class would let a buffer that cannot be mapped pass as a picture.
GstFlowReturn TransformFrame(GstVideoFilter*, GstVideoFrame*, GstVideoFrame*) {
  return GST_FLOW_NOT_SUPPORTED;
}

// A preset holds what the effect is set to, and neither the element's name nor its parent.
gchar** PresetProperties(GstPreset* preset) {
  guint count = 0;
  GParamSpec** specs = g_object_class_list_properties(G_OBJECT_GET_CLASS(preset), &count);
  auto** names = g_new0(gchar*, count + 1);
  guint kept = 0;
  for (guint i = 0; i < count; ++i) {
    if (specs[i]->owner_type == G_OBJECT_TYPE(preset)) names[kept++] = g_strdup(specs[i]->name);
  }
  g_free(specs);
  return names;
}

void InitPreset(gpointer interface, gpointer) {
  static_cast<GstPresetInterface*>(interface)->get_property_names = PresetProperties;
}

std::string Description(const EffectInfo& effect) {
  std::string text = fmt::format("Video effect of the family \"{}\"", effect.family);
  if (effect.moving) text += "; moves on a still picture";
  text += effect.ordered ? "; keeps frames or state, so frames must come in order" : "; every frame by itself";
  if (effect.random) text += "; two runs differ";
  return text;
}

// Effects that share a name keep their id in the slug.
std::string LongName(const EffectInfo& effect) {
  const bool isShared = effect.slug != Slug(effect.name);
  return isShared ? fmt::format("kvx {} {}", effect.name, effect.id) : fmt::format("kvx {}", effect.name);
}

void AddPadTemplate(GstElementClass* elementClass, const char* name, GstPadDirection direction) {
  GstCaps* caps = gst_caps_from_string(kCaps);
  gst_element_class_add_pad_template(elementClass, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);
}

void InitClass(gpointer itsClass, gpointer row) {
  parentClass = static_cast<GstVideoFilterClass*>(g_type_class_peek_parent(itsClass));
  static_cast<VideoEffectClass*>(itsClass)->row = static_cast<const EffectClass*>(row);
  const auto& [effect, params] = *static_cast<const EffectClass*>(row);

  auto* objectClass = G_OBJECT_CLASS(itsClass);
  objectClass->set_property = SetProperty;
  objectClass->get_property = GetProperty;
  objectClass->finalize = Finalize;
  InstallProperties(objectClass, *effect, params);

  auto* elementClass = GST_ELEMENT_CLASS(itsClass);
  elementClass->change_state = ChangeState;
  gst_element_class_set_metadata(elementClass, LongName(*effect).c_str(), "Filter/Effect/Video",
                                 Description(*effect).c_str(), "kvx maintainers <maintainers@kvx.invalid>");
  AddPadTemplate(elementClass, "sink", GST_PAD_SINK);
  AddPadTemplate(elementClass, "src", GST_PAD_SRC);

  auto* base = GST_BASE_TRANSFORM_CLASS(itsClass);
  base->start = Start;
  base->sink_event = SinkEvent;
  base->decide_allocation = DecideAllocation;
  base->transform_size = TransformSize;
  base->transform_meta = TransformMeta;
  base->before_transform = BeforeTransform;
  base->transform = Transform;
  base->transform_ip_on_passthrough = FALSE;
  auto* filter = GST_VIDEO_FILTER_CLASS(itsClass);
  filter->set_info = SetInfo;
  filter->transform_frame = TransformFrame;
}

}  // namespace

GstDebugCategory* DebugCategory() {
  static GstDebugCategory* const category = [] {
    GstDebugCategory* made = nullptr;
    GST_DEBUG_CATEGORY_INIT(made, "kvx", 0, "kvx video effects");
    return made;
  }();
  return category;
}

bool RegisterEffect(GstPlugin* module, const EffectInfo& effect) {
  const std::string name = "kvx-" + effect.slug;
  GTypeInfo info{};
  info.class_size = sizeof(VideoEffectClass);
  info.class_init = InitClass;
  info.class_data = new EffectClass{&effect, ShownParams(effect)};  // types stay
  info.instance_size = sizeof(VideoEffect);
  info.instance_init = InitInstance;
  const GType type = g_type_register_static(GST_TYPE_VIDEO_FILTER, name.c_str(), &info, static_cast<GTypeFlags>(0));
  if (type == G_TYPE_INVALID) return false;
  const GInterfaceInfo preset{InitPreset, nullptr, nullptr};
  g_type_add_interface_static(type, GST_TYPE_PRESET, &preset);
  return gst_element_register(module, name.c_str(), GST_RANK_NONE, type);
}

}  // namespace kvx

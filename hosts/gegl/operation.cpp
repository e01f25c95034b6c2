#include "hosts/gegl/operation.h"

#include <fmt/format.h>
#include <gegl-plugin.h>

#include <algorithm>
#include <mutex>

#include "codecs/picture.h"
#include "hosts/gegl/frames.h"
#include "hosts/gegl/operations_plugin.h"

namespace kvx {

namespace {

constexpr double kMillisecondsPerFrame = 40;

// What an operation keeps: its properties' values, in the order of the row, and an effect whose frames leave nothing
// behind in it. Even such a one may go on with tables that it made for its first size and values, and is given up when
// those change. `changes` tells whether they did while it was out.
struct State {
  std::mutex mutex;
  std::vector<GValue> values;
  uint64_t changes = 0;
  std::unique_ptr<Effect> effect;
  int width = 0;  // the effect's
  int height = 0;
};

struct Operation {
  GeglOperationFilter parent;
  State* state;
};

struct OperationClass {
  GeglOperationFilterClass parent;
  const OperationRow* row;
  GObjectClass* parentClass;
};

State& StateOf(gpointer operation) {
  return *static_cast<Operation*>(operation)->state;
}

const OperationRow& RowOf(gpointer operation) {
  return *reinterpret_cast<OperationClass*>(G_OBJECT_GET_CLASS(operation))->row;
}

void Init(GTypeInstance* instance, gpointer klass) {
  auto* state = new State;
  const OperationRow& row = *static_cast<OperationClass*>(klass)->row;
  for (const Property& property : row.properties) {
    const GParamSpec* spec = g_object_class_find_property(static_cast<GObjectClass*>(klass), property.name.c_str());
    g_value_init(&state->values.emplace_back(), spec->value_type);
  }
  reinterpret_cast<Operation*>(instance)->state = state;
}

void Finalize(GObject* object) {
  State* state = &StateOf(object);
  for (GValue& value : state->values) g_value_unset(&value);
  delete state;
  reinterpret_cast<OperationClass*>(G_OBJECT_GET_CLASS(object))->parentClass->finalize(object);
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec*) {
  g_value_copy(&StateOf(object).values[id - 1], value);
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec*) {
  State& state = StateOf(object);
  const std::lock_guard lock(state.mutex);
  g_value_copy(value, &state.values[id - 1]);
  if (id > RowOf(object).effect.params.size()) return;  // opacity and frame are nothing to the effect's tables
  ++state.changes;
  state.effect.reset();
}

// Eight bits, not linear, alpha not multiplied in, in the picture's own colours: what the effects were made for. No
// byte changes on the way in and out of a picture of eight bits.
const Babl* FormatOf(GeglOperation* operation) {
  const Babl* space = gegl_operation_get_source_space(operation, "input");
  if (space && babl_space_is_cmyk(space)) space = nullptr;
  return babl_format_with_space("R'G'B'A u8", space);
}

void Prepare(GeglOperation* operation) {
  const Babl* format = FormatOf(operation);
  gegl_operation_set_format(operation, "input", format);
  gegl_operation_set_format(operation, "output", format);
}

bool TakesSize(const GeglRectangle& box) {
  return box.width <= kMaxPictureSide && box.height <= kMaxPictureSide &&
         int64_t{box.width} * box.height <= kMaxPicturePixels;
}

// The whole picture; null if there is none, if it has no end, or if it is too large.
const GeglRectangle* PictureBox(GeglOperation* operation) {
  const GeglRectangle* box = gegl_operation_source_get_bounding_box(operation, "input");
  return box && !gegl_rectangle_is_empty(box) && TakesSize(*box) ? box : nullptr;
}

// Effects look at the whole picture: any part of the output needs all of the input, and all of it is made at once.
GeglRectangle WholePictureOr(GeglOperation* operation, const GeglRectangle* region) {
  const GeglRectangle* box = PictureBox(operation);
  return box ? *box : *region;
}

GeglRectangle RequiredForOutput(GeglOperation* operation, const gchar*, const GeglRectangle* region) {
  return WholePictureOr(operation, region);
}

// What was set to something else than it starts with.
FrameValues SetValues(const OperationRow& row, const std::vector<GValue>& from, const Babl* space) {
  FrameValues set;
  for (size_t i = 0; i < row.properties.size(); ++i) {
    const Property& property = row.properties[i];
    const std::string& name = property.param.name;
    if (property.param.IsText()) {
      const char* text = g_value_get_string(&from[i]);
      if (text && *text) set.texts[name] = text;
    } else if (const double number = NumberOf(property, from[i], space); number != StartNumber(property)) {
      set.numbers[name] = number;
    }
  }
  return set;
}

FrameValues ValuesAt(const OperationRow& row, int frame, const FrameValues& set) {
  FrameValues values = row.start.At(frame, frame * kMillisecondsPerFrame);
  for (const auto& [name, number] : set.numbers) values.numbers[name] = number;
  for (const auto& [name, text] : set.texts) values.texts[name] = text;
  return values;
}

// Frames that must come in order are played from the first, on an object of their own: the same frame then shows the
// same picture whatever was looked at before. Nothing is locked meanwhile.
void RenderFrame(GeglOperation* operation, Plugin& plugin, ConstImageView in, ImageView out, const Babl* space) {
  const OperationRow& row = RowOf(operation);
  State& state = StateOf(operation);
  std::unique_ptr<Effect> effect;
  std::unique_lock lock(state.mutex);
  const FrameValues set = SetValues(row, state.values, space);
  const int last = row.effect.moving ? g_value_get_int(&state.values.back()) : 0;
  const uint64_t changes = state.changes;
  if (state.width == in.width && state.height == in.height) effect = std::move(state.effect);
  lock.unlock();

  if (!effect) effect = plugin.Create(row.effect);
  const int first = row.effect.ordered ? 0 : last;
  for (int frame = first; frame <= last; ++frame) {
    effect->Render(in, out, {frame, std::max(kClipFrames, last + 1)}, ValuesAt(row, frame, set));
    if (last > first) gegl_operation_progress(operation, (frame + 1.0) / (last + 1), nullptr);
  }

  lock.lock();
  if (row.effect.ordered || state.changes != changes) return;
  state.effect = std::move(effect);
  state.width = in.width;
  state.height = in.height;
}

// False if the effect cannot be had; that has been told then.
bool RenderPicture(GeglOperation* operation, GeglOperationContext* context, GeglBuffer* input, const GeglRectangle& box,
                   const GeglRectangle& region) {
  Plugin* const plugin = OperationsPlugin();
  if (!plugin) return false;
  try {
    const Babl* format = FormatOf(operation);
    Frame before(box);
    Frame after(box);
    before.Read(input, format);
    const ImageView in = before.View();
    RenderFrame(operation, *plugin, {in.data, in.width, in.height, in.stride}, after.View(),
                babl_format_get_space(format));
    after.Write(gegl_operation_context_get_target(context, "output"), format, region);
    return true;
  } catch (const std::exception& error) {
    WarnOnce(fmt::format("{} shows its input: {}", RowOf(operation).title, error.what()));
    return false;
  }
}

gboolean Process(GeglOperation* operation, GeglOperationContext* context, const gchar*, const GeglRectangle* region,
                 gint) {
  auto* input = reinterpret_cast<GeglBuffer*>(gegl_operation_context_get_object(context, "input"));
  if (!input) {
    gegl_operation_context_get_target(context, "output");
    return TRUE;
  }
  const GeglRectangle* box = PictureBox(operation);
  if (!box && !gegl_rectangle_is_empty(region)) {
    WarnOnce("kvx operations show an input that has no end or more than 32768 pixels a side: crop it first");
  }
  if (!box || !RenderPicture(operation, context, input, *box, *region)) {
    gegl_operation_context_set_object(context, "output", G_OBJECT(input));
  }
  return TRUE;
}

void InitClass(gpointer klass, gpointer data) {
  auto* own = static_cast<OperationClass*>(klass);
  auto* object = static_cast<GObjectClass*>(klass);
  auto* operation = static_cast<GeglOperationClass*>(klass);
  own->row = static_cast<const OperationRow*>(data);
  own->parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(klass));
  object->finalize = Finalize;
  object->get_property = GetProperty;
  object->set_property = SetProperty;
  guint id = 0;
  for (const Property& property : own->row->properties) {
    g_object_class_install_property(object, ++id, MakeParamSpec(property));
  }
  operation->prepare = Prepare;
  operation->process = Process;
  operation->get_required_for_output = RequiredForOutput;
  operation->get_invalidated_by_change = RequiredForOutput;
  operation->get_cached_region = WholePictureOr;
  operation->threaded = FALSE;
  operation->want_in_place = FALSE;
  gegl_operation_class_set_keys(operation, "name", own->row->name.c_str(), "title", own->row->title.c_str(),
                                "categories", own->row->categories.c_str(), "description",
                                own->row->description.c_str(), nullptr);
}

}  // namespace

void RegisterOperation(GTypeModule* module, const OperationRow& row) {
  GTypeInfo info{};
  info.class_size = sizeof(OperationClass);
  info.class_init = InitClass;
  info.class_data = &row;
  info.instance_size = sizeof(Operation);
  info.instance_init = Init;
  const std::string type = "KvxGegl-" + row.effect.slug;
  gegl_module_register_type(module, GEGL_TYPE_OPERATION_FILTER, type.c_str(), &info, GTypeFlags{});
}

}  // namespace kvx

// What our hosts know of the effects: identity, family, traits, parameters.
#ifndef KVX_HOSTKIT_EFFECTS_H_
#define KVX_HOSTKIT_EFFECTS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kvx {

// How a parameter is declared to a host.
enum class ParamType {
  kFloat,
  kInteger,
  kColor,
  kCheckBox,
  kText,
  kDouble,
  kNinePositions,
  kMaskList,
  kMosaicList,
  kFirstColor,
  kLastColor,
  kSpecialFloat
};
const char* ParamTypeName(ParamType type);

struct ParamInfo {
  std::string name;
  ParamType type = ParamType::kDouble;
  double minimum = 0;
  double maximum = 0;
  double defaultValue = 0;
  bool hidden = false;

  bool IsText() const { return type == ParamType::kText || type == ParamType::kMaskList; }
  bool TakesFractions() const {
    return type == ParamType::kFloat || type == ParamType::kDouble || type == ParamType::kSpecialFloat;
  }
  bool IsColor() const {
    return type == ParamType::kColor || type == ParamType::kFirstColor || type == ParamType::kLastColor;
  }
};

// An effect that nothing is known of is taken for the worst: hence the defaults.
struct EffectInfo {
  int32_t id = 0;
  std::string name;  // two effects may share one
  std::string slug;  // unique
  std::string guid;
  std::string family = "other";
  bool moving = false;                 // moves on a still source
  bool ordered = true;                 // frames must come in order, on one object
  bool random = true;                  // two runs differ
  bool movesStream = true;             // random effects beside it see that it was there
  bool writesSource = true;            // the source buffer comes back changed
  bool leavesPixels = true;            // bytes of the destination may stay as they were
  std::vector<std::string> materials;  // picture files below "Merge" of the material directory
  std::vector<ParamInfo> params;       // without the opacity, which every effect has
};

// The opacity in percent, 0 to 100, as the plug-in names it.
inline constexpr char kOpacityName[] = "alpha";

// Lower case; every run of characters outside a-z and 0-9 becomes one '-', none at the ends.
std::string Slug(std::string_view name);

// All families, in the order in which they are shown.
const std::vector<std::string>& Families();

class EffectList {
 public:
  EffectList() = default;
  // Gives the effects their slugs: where two share a name, each gets its id behind it.
  explicit EffectList(std::vector<EffectInfo> effects);

  const std::vector<EffectInfo>& All() const { return effects_; }

  // By id, GUID, slug or name (case does not matter). Throws Error, kUnknownName, with the nearest names, or with the
  // candidates if a name stands twice.
  const EffectInfo& Find(const std::string& text) const;
  // Null for an unknown id.
  const EffectInfo* WithId(int32_t id) const;

 private:
  std::vector<EffectInfo> effects_;
};

// By name or slug, case does not matter. Throws Error, kUnknownName, with the names that there are.
const ParamInfo& FindParam(const EffectInfo& effect, const std::string& name);

// The up to `count` candidates nearest to `wanted`, nearest first; case does not matter.
std::vector<std::string> NearestNames(const std::string& wanted, const std::vector<std::string>& candidates,
                                      size_t count = 3);

// The description beside the catalogue, `resourceRoot` + "/kvx_effect/material/effects.json", which the build makes;
// where there is none, the one that this binary was built with. Costs milliseconds and does not load the plug-in.
// Throws Error if the file is there but damaged.
EffectList ReadDescription(const std::string& resourceRoot);

// The one that this binary was built with.
EffectList BuiltinDescription();

// Where that file is looked for.
std::string DescriptionPath(const std::string& resourceRoot);

// The text of such a file.
std::string WriteDescription(const std::vector<EffectInfo>& effects);

}  // namespace kvx

#endif  // KVX_HOSTKIT_EFFECTS_H_

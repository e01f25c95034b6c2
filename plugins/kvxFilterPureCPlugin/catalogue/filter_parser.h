// One filter's JSON object -> its description.
#ifndef KVX_CATALOGUE_FILTER_PARSER_H_
#define KVX_CATALOGUE_FILTER_PARSER_H_

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "catalogue/description/filter_info.h"

namespace vizcore {

// `dataPath` is the filter's directory with its ending separator. Empty if the object names no GUID. A value of a wrong
// type raises the JSON library's error; "DYNAMIC" raises std::invalid_argument or std::out_of_range.
std::shared_ptr<NLEFilterInfo> ParseFilterInfo(const nlohmann::json& object, const std::string& dataPath);

// Adds the elements of "PARAMS" to `info`. An element without a known "TYPE" is dropped and takes no index.
void ParseFilterParams(const nlohmann::json& array, const std::shared_ptr<NLEFilterInfo>& info);

}  // namespace vizcore

#endif  // KVX_CATALOGUE_FILTER_PARSER_H_

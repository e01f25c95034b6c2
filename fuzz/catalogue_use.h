// What a host does with a catalogue, in one process as often as a fuzzer likes.
#ifndef KVX_FUZZ_CATALOGUE_USE_H_
#define KVX_FUZZ_CATALOGUE_USE_H_

#include <string>

// Starts the plug-in on the resource root, declares every effect that it offers and renders two frames of the first
// few. `directory`, unless empty, is then declared by its path. What was loaded before is forgotten. The errors that a
// catalogue may raise by values of a wrong type are taken as a host would; any other goes on and ends the run.
void UseCatalogue(const std::string& root, const std::string& directory = "");

#endif  // KVX_FUZZ_CATALOGUE_USE_H_

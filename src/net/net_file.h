// The network's file (.net): 21 header fields, then one record a unit, layer by layer.
#pragma once

#include <string>

#include "net/neural_net.h"

namespace norv {

// Reads the file and binds the activations, whatever the kinds. Throws "PROBLEM OPENING FILE!" with the true reason on
// standard error when the file cannot be opened, ends early, or when its sizes or records make no network; the network
// then stays as it was. Bytes behind the last record are ignored.
void LoadNet(NeuralNet& net, const std::string& name, Folder folder);

// Throws "Problem Saving File" (reason on standard error) when not every byte could be written; the old file then
// stays.
void SaveNet(const NeuralNet& net, const std::string& name, Folder folder);

}  // namespace norv

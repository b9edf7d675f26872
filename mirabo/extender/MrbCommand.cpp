#include "mirabo/extender/MrbCommand.h"

MrbCommand::~MrbCommand() = default;

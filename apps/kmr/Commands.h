#pragma once

#include <string>
#include <vector>

/// The words behind the command's name.
using Arguments = std::vector<std::string>;

/// 0 done, 1 could not read or write, 2 wrong usage (said already).
int runInfo(const Arguments& arguments);
int runConvert(const Arguments& arguments);
int runRender(const Arguments& arguments);
int runExport(const Arguments& arguments);

/// Says what is wrong with the arguments and how to call; 2.
int wrongUsage(const std::string& reason);

/// Takes "--name VALUE" or "--name=VALUE" out of the arguments. False when the value is missing;
/// `value` stays as it is without the option.
bool takeOption(Arguments& arguments, const std::string& name, std::string& value);
/// Takes "--name" out of the arguments; whether it was there.
bool takeFlag(Arguments& arguments, const std::string& name);
/// What is left over in front of "--" looks like an option; it is then named. Takes "--" out: what
/// stays are names.
bool hasUnknownOption(Arguments& arguments, std::string& option);

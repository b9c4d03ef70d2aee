#pragma once

#include <string>

// A person in front of the dialog that asks for a folder or a file, which comes within five seconds.
void answerOpenPanel(const std::string& path);
void cancelOpenPanel();

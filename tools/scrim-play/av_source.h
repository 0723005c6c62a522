// Video files read with FFmpeg's libraries: one video stream, decoded in
// software picture by picture, with each picture's timestamp and the stream's
// colour description.
#pragma once

#include <memory>
#include <string>

#include "picture_source.h"

// Null with a message when the file cannot be played. stream: the stream to
// play, -1 for the first video stream.
std::unique_ptr<PictureSource> OpenAvSource(const std::string& path, int stream, std::string& error);

#pragma once

#include <kernel/EncodingOutStream.h> // defines Base64OutStream

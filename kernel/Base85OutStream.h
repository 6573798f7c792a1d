#pragma once

#include <kernel/EncodingOutStream.h> // defines Base85OutStream

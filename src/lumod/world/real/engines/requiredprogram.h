// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"

/// Whether `program` is there, which `who` needs: "Wi-Fi needs", say. The failure is a sentence for
/// a person and names the Debian package that brings it.
Result<> requireProgram(const char* who, const QString& program, const char* package);

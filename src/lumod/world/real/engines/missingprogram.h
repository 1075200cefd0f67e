// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// The sentence for a person where `program` is missing, which `who` needs: "Wi-Fi needs", say. It
/// names the Debian package that brings it. Empty where the program is there.
QString missingProgram(const char* who, const QString& program, const char* package);

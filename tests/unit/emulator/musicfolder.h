#pragma once

#include "emulator/catalogue/catalogue.h"
#include "emulator/catalogue/musicfile.h"
#include "emulator/samples/encoder.h"

#include <QString>

/// Makes a short tone of the format, tagged; returns what went wrong.
QString makeTone(const QString& file, emulator::samples::Format format,
    const emulator::catalogue::Tags& tags, double seconds = 0.3, const QByteArray& cover = {});

/// Tags with the fields that most tests want.
emulator::catalogue::Tags tagged(
    const char* artist, const char* album, const char* title, int number = 1);

/// A file as a scan would have found it.
emulator::catalogue::MusicFile musicFile(const char* path, const emulator::catalogue::Tags& tags);

/// A library that exists in memory only: `albums` albums of `tracksEach` tracks by half as many
/// artists.
emulator::catalogue::CataloguePointer inventedCatalogue(int albums, int tracksEach);

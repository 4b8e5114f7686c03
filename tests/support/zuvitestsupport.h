#pragma once

#include "platform/zuvidefaults.h"

#include <QTemporaryDir>

#include <memory>

// A scratch user-defaults store in a temporary folder that goes with it.
struct ZuviScratchDefaults {
    QTemporaryDir dir;
    std::unique_ptr<ZuviDefaults> defaults{new ZuviDefaults(dir.filePath("defaults.ini"))};

    ZuviDefaults *get() const { return defaults.get(); }
};

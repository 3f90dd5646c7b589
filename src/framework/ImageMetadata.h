#pragma once

#include "host/Image.h"

/// The image's table "Metadata", made if it isn't there. A value that is no table, there or in the image's
/// info, gives way to one. Valid as long as the table is in the image.
inline ScriptVal& MetadataTable(Image& image) {
    if (!image.ImageInfo.IsTable()) image.ImageInfo.Set(ScriptVal_Table, nullptr);
    ScriptVal& metadata = image.ImageInfo.FindKey("Metadata");
    if (!metadata.IsTable()) metadata.Set(ScriptVal_Table, nullptr);
    return metadata;
}

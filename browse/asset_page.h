// One page of a listing of assets.
#pragma once

#include "browse/asset_record.h"
#include "platform/asset.h"

#include <jni.h>

#include <cstddef>
#include <string>

// The records from `start` up to, but not with, `end`; both within the listing.
struct PageBounds {
    std::size_t start = 0;
    std::size_t end = 0;
};

// What the host's page size and offset mean for a listing of `total` assets: negative ones count
// as 0, and the page ends with the listing.
PageBounds boundsOfPage(std::size_t total, jint count, jint offset);

// The page as a JSON array. Records before it are not touched.
std::string jsonOfPage(const platform::PHFetchResult<platform::PHAsset>& assets, PageBounds page,
                       AssetRecordVariant variant);

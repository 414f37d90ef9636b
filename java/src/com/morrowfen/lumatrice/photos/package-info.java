/**
 * The photo library for a host: {@link com.morrowfen.lumatrice.photos.PhotoLibrary} and the
 * records that it answers with.
 */
package com.morrowfen.lumatrice.photos;

/**
 * The native methods as they are, and how the native library is found and loaded. Hosts that want
 * types use {@link com.morrowfen.lumatrice.photos} instead.
 */
package com.morrowfen.lumatrice.service;

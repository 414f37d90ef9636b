package com.morrowfen.lumatrice.conformance;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;

class AccessTest {
    @Test
    void isGrantedAndStaysTheSame() {
        int access = TestLibrary.PHOTOS.nativeAuthorize();
        assertTrue(access == 1 || access == 2, "access " + access);
        assertEquals(access, TestLibrary.PHOTOS.nativeAuthorize());
    }
}

package com.morrowfen.lumatrice.conformance;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.regex.Pattern;

/** What the library writes to its log from the making of this object on. */
final class LogTail {
    private static final Pattern TIME =
            Pattern.compile("(?m)^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d ");
    private static final int TIME_LENGTH = "2000-01-01 00:00:00 ".length();

    private final int start = TestLibrary.logBytes().length;

    LogTail() throws IOException {}

    private byte[] bytes() throws IOException {
        byte[] all = TestLibrary.logBytes();
        return Arrays.copyOfRange(all, start, all.length);
    }

    /** Expects exactly these messages, in this order; a message may have several lines. */
    void assertMessages(String... messages) throws IOException {
        StringBuilder expected = new StringBuilder();
        for (String message : messages) {
            expected.append(message).append('\n');
        }
        String actual = new String(bytes(), StandardCharsets.UTF_8);
        assertEquals(messages.length, TIME.matcher(actual).results().count(), actual);
        assertEquals(expected.toString(), TIME.matcher(actual).replaceAll(""));
    }

    /** Expects one message, cut after so many bytes, within a character if need be. */
    void assertCutMessage(String uncut, int length) throws IOException {
        byte[] actual = bytes();
        assertEquals(TIME_LENGTH + length + 1, actual.length);
        assertTrue(TIME.matcher(new String(actual, StandardCharsets.ISO_8859_1)).lookingAt());
        assertEquals('\n', actual[actual.length - 1]);
        byte[] expected = Arrays.copyOf(uncut.getBytes(StandardCharsets.UTF_8), length);
        assertEquals(-1, Arrays.mismatch(expected,
                Arrays.copyOfRange(actual, TIME_LENGTH, TIME_LENGTH + length)));
    }
}

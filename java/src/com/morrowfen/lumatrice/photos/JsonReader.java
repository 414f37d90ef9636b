package com.morrowfen.lumatrice.photos;

/**
 * Reads JSON text from front to back, by pulling. Strict, but that strings may hold control
 * characters as they are. Every complaint is an {@link IllegalArgumentException}, whatever the
 * text; nothing recurses.
 */
final class JsonReader {
    private static final int NOT_LOOKED_FOR = -1;

    private final String text;
    private final char[] units; // the same; a look at one is cheaper, above all before it is compiled
    private final int length;
    private int at;
    private int nextBackslash = NOT_LOOKED_FOR;
    private String escapedKey;
    private int keyStart;
    private int keyLength;

    JsonReader(String text) {
        this.text = text;
        units = text.toCharArray();
        length = units.length;
    }

    /** Steps into an array; true if it has an element. */
    boolean beginArray() {
        expect('[');
        return !skipIf(']');
    }

    /** Steps past an element; true if another one follows in the array. */
    boolean nextElement() {
        return separator(']');
    }

    /** Steps into an object and to its first value; true if it has one. */
    boolean beginObject() {
        expect('{');
        if (skipIf('}')) {
            return false;
        }
        readKey();
        return true;
    }

    /** Steps past a value; true if another one follows in the object. */
    boolean nextField() {
        if (!separator('}')) {
            return false;
        }
        readKey();
        return true;
    }

    /** Whether the value to read has this name. */
    boolean keyIs(String name) {
        return escapedKey != null
                ? escapedKey.equals(name)
                : keyLength == name.length() && text.startsWith(name, keyStart);
    }

    void end() {
        skipSpace();
        if (at != length) {
            throw unexpected();
        }
    }

    boolean readBoolean() {
        skipSpace();
        if (skipWord("true")) {
            return true;
        }
        if (skipWord("false")) {
            return false;
        }
        throw unexpected();
    }

    /** An integer; one that is out of range gives the nearest end of the range. */
    long readLong() {
        skipSpace();
        boolean negative = at < length && units[at] == '-';
        int first = negative ? ++at : at;
        long value = 0; // negative, as that side of the range is the longer one
        boolean over = false;
        for (; at < length && isDigit(units[at]); ++at) {
            int digit = units[at] - '0';
            over |= value < (Long.MIN_VALUE + digit) / 10;
            value = over ? value : value * 10 - digit;
        }
        boolean leadingZero = at - first > 1 && units[first] == '0';
        if (at == first || leadingZero || startsFraction()) {
            throw unexpected();
        }
        if (over) {
            return negative ? Long.MIN_VALUE : Long.MAX_VALUE;
        }
        if (negative) {
            return value;
        }
        return value == Long.MIN_VALUE ? Long.MAX_VALUE : -value;
    }

    /** As {@link #readLong}, for an int that cannot be negative. */
    int readSize() {
        return (int) Math.max(0, Math.min(Integer.MAX_VALUE, readLong()));
    }

    String readString() {
        expect('"');
        int start = at;
        int quote = text.indexOf('"', start);
        if (quote < 0) {
            throw unexpected("an open string", start - 1);
        }
        if (backslashFrom(start) > quote) {
            at = quote + 1;
            return text.substring(start, quote);
        }
        return readEscaped();
    }

    /** Steps past a value of any kind. */
    void skipValue() {
        StringBuilder open = null; // the closing brackets that are due, made when there is one
        do {
            skipSpace();
            if (at == length) {
                throw unexpected();
            }
            char first = units[at];
            boolean nested = first == '[' && beginArray() || first == '{' && beginObject();
            if (nested) {
                open = open == null ? new StringBuilder() : open;
                open.append(first == '[' ? ']' : '}');
                continue;
            }
            if (first != '[' && first != '{') {
                skipScalar(first);
            }
            while (open != null && open.length() > 0 && !another(open)) {
                open.setLength(open.length() - 1);
            }
        } while (open != null && open.length() > 0);
    }

    private boolean another(StringBuilder open) {
        return open.charAt(open.length() - 1) == ']' ? nextElement() : nextField();
    }

    private void skipScalar(char first) {
        if (first == '"') {
            readString();
            return;
        }
        if (skipWord("true") || skipWord("false") || skipWord("null")) {
            return;
        }
        int start = at;
        while (at < length && "+-.0123456789Ee".indexOf(units[at]) >= 0) {
            ++at;
        }
        if (start == at) {
            throw unexpected();
        }
    }

    private void readKey() {
        expect('"');
        --at;
        int start = at + 1;
        int quote = text.indexOf('"', start);
        if (quote >= 0 && backslashFrom(start) > quote) {
            escapedKey = null;
            keyStart = start;
            keyLength = quote - start;
            at = quote + 1;
        } else {
            escapedKey = readString();
        }
        expect(':');
    }

    /** Where the next backslash stands; looked for once, as most texts hold none. */
    private int backslashFrom(int start) {
        if (nextBackslash < start) {
            int found = text.indexOf('\\', start);
            nextBackslash = found < 0 ? Integer.MAX_VALUE : found;
        }
        return nextBackslash;
    }

    private String readEscaped() {
        StringBuilder plain = new StringBuilder();
        while (at < length) {
            char next = units[at++];
            if (next == '"') {
                return plain.toString();
            }
            plain.append(next == '\\' ? readEscape() : next);
        }
        throw unexpected("an open string", at);
    }

    private char readEscape() {
        if (at == length) {
            throw unexpected();
        }
        char kind = units[at++];
        return switch (kind) {
            case '"', '\\', '/' -> kind;
            case 'b' -> '\b';
            case 'f' -> '\f';
            case 'n' -> '\n';
            case 'r' -> '\r';
            case 't' -> '\t';
            case 'u' -> readUnit();
            default -> throw unexpected("an unknown escape", at - 1);
        };
    }

    private char readUnit() {
        int unit = 0;
        for (int end = at + 4; at < end; ++at) {
            char next = at < length ? units[at] : 0;
            int digit = next < 128 ? Character.digit(next, 16) : -1;
            if (digit < 0) {
                throw unexpected("no hexadecimal digit", at);
            }
            unit = unit << 4 | digit;
        }
        return (char) unit;
    }

    private boolean separator(char closing) {
        if (skipIf(closing)) {
            return false;
        }
        expect(',');
        return true;
    }

    private boolean startsFraction() {
        return at < length && ".eE".indexOf(units[at]) >= 0;
    }

    private static boolean isDigit(char unit) {
        return unit >= '0' && unit <= '9';
    }

    private boolean skipWord(String word) {
        if (!text.startsWith(word, at)) {
            return false;
        }
        at += word.length();
        return true;
    }

    private boolean skipIf(char wanted) {
        skipSpace();
        if (at == length || units[at] != wanted) {
            return false;
        }
        ++at;
        return true;
    }

    private void expect(char wanted) {
        if (!skipIf(wanted)) {
            throw unexpected();
        }
    }

    private void skipSpace() {
        while (at < length && units[at] <= ' ' && isSpace(units[at])) {
            ++at;
        }
    }

    private static boolean isSpace(char unit) {
        return unit == ' ' || unit == '\n' || unit == '\r' || unit == '\t';
    }

    private IllegalArgumentException unexpected() {
        return at < length
                ? unexpected("unexpected text", at)
                : unexpected("the text ends too early", at);
    }

    private static IllegalArgumentException unexpected(String what, int where) {
        return new IllegalArgumentException(what + " at character " + where);
    }
}

package com.morrowfen.lumatrice.photos;

import static org.junit.jupiter.api.Assertions.*;

import java.util.ArrayList;
import java.util.List;
import java.util.Random;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Listings as they are written, as they might be, and as they must not be. */
class ListingsTest {
    private static final String ASSET = "[{\"id\":\"A/L0/001\",\"filename\":\"a\\\"\\\\\\/b\\u0001\\t\\n\\r"
            + "\\u00E9\\ud83d\\ude00\u00fc\u2028.jpg\",\"isVideo\":true,\"width\":4000,\"height\":3000,"
            + "\"createdMs\":-9223372036854775808,\"isFavorite\":false,\"isHidden\":true}]";

    private static List<Asset> assets(String json) {
        return Listings.assets("test", json);
    }

    @Test
    void everyFieldAndEscapeIsRead() {
        Asset asset = new Asset("A/L0/001", "a\"\\/b\u0001\t\n\r\u00e9\ud83d\ude00\u00fc\u2028.jpg", true,
                4000, 3000, Long.MIN_VALUE, false, true);
        assertEquals(List.of(asset), assets(ASSET));
        assertEquals(List.of(asset), assets(ASSET.replaceAll("([\\[{}:,\\]])", " $1\r\n\t")));
        assertEquals(List.of(asset), assets(ASSET.replace("\"id\"", "\"\\u0069d\"")));
        assertEquals(List.of(), assets("[]"));
        assertEquals(List.of(new Collection("c", "", Collection.Kind.SMART, 3000000000L),
                new Collection("d", "\\", Collection.Kind.FOLDER, 0)), Listings.collections("test",
                "[{\"id\":\"c\",\"title\":\"\",\"kind\":\"smart\",\"count\":3000000000},"
                        + "{\"id\":\"d\",\"title\":\"\\\\\",\"kind\":\"folder\",\"count\":0}]"));
    }

    @Test
    void numbersOutOfRangeGiveItsEndAndUnknownFieldsAreSkipped() {
        String deep = "[".repeat(100_000) + "{\"}\":[1.5e-3,{}]}" + "]".repeat(100_000);
        Asset asset = assets("[{\"id\":\"i\",\"new\":" + deep + ",\"filename\":\"f\",\"x\":null,\"width\":"
                + "18446744073709551615,\"height\":-1,\"createdMs\":9223372036854775807,\"y\":\"\\\"\"}]").get(0);
        assertEquals(new Asset("i", "f", false, Integer.MAX_VALUE, 0, Long.MAX_VALUE, false, false), asset);
        assertEquals(Long.MAX_VALUE, new JsonReader("9223372036854775808").readLong());
        assertEquals(Long.MIN_VALUE, new JsonReader("-9223372036854775809").readLong());
        assertEquals(-922337203685477580L, new JsonReader("-922337203685477580").readLong());
        assertEquals(0, new JsonReader("0").readLong());
    }

    @ParameterizedTest
    @ValueSource(strings = {"", " ", "[", "]", "[]]", "[],", "{}", "null", "[null]", "[1]", "[{}]", "[,]", "[{\"id\":\"i\"}]",
        "[{\"id\":null,\"filename\":\"f\"}]", "[{\"id\":\"i\",\"filename\":\"f\"},]", "[{\"id\":\"i\",\"filename\":\"f\",}]",
        "[{\"id\":\"i\" \"filename\":\"f\"}]", "[{\"id\":\"i\",\"filename\":\"f\"}{}]", "[{\"id\":\"\\x\",\"filename\":\"f\"}]",
        "[{\"id\":\"\\u00g0\",\"filename\":\"f\"}]", "[{\"id\":\"\\u00\",\"filename\":\"f\"}]", "[{\"id\":\"i\",\"filename\":\"f",
        "[{\"id\":\"i\",\"filename\":\"f\\", "[{\"id\":\"i\",\"filename\":\"f\",\"width\":01}]", "[{\"id\":\"i\",\"filename\":\"f\",\"width\":-}]",
        "[{\"id\":\"i\",\"filename\":\"f\",\"width\":1.5}]", "[{\"id\":\"i\",\"filename\":\"f\",\"isVideo\":1}]",
        "[{\"id\":\"i\",\"filename\":\"f\",\"x\":}]", "[{\"id\":\"i\",\"filename\":\"f\",\"x\":[1}]", "[{id:\"i\"}]"})
    void whatIsNoListingIsRefused(String json) {
        PhotosException problem = assertThrows(PhotosException.class, () -> assets(json));
        assertTrue(problem.code().isEmpty() && problem.getMessage().contains("damaged"));
    }

    @Test
    void cutAndScrambledListingsEndInRecordsOrOneKindOfException() {
        for (int end = 0; end < ASSET.length(); ++end) {
            String cut = ASSET.substring(0, end);
            assertThrows(PhotosException.class, () -> assets(cut));
        }
        Random random = new Random(1);
        for (int i = 0; i < 100_000; ++i) {
            StringBuilder text = new StringBuilder(ASSET);
            for (int changes = 1 + random.nextInt(3); changes > 0; --changes) {
                text.setCharAt(random.nextInt(text.length()), "[]{}:,\"\\u09-t\ud83d".charAt(random.nextInt(14)));
            }
            try {
                assets(text.toString());
            } catch (PhotosException refused) {
                assertEquals("test", refused.method());
            }
        }
    }

    @Test
    void aShortPageIsNotTheLast() {
        Asset asset = assets(ASSET).get(0);
        List<Integer> offsets = new ArrayList<>();
        List<Page> pages = Pages.stream(10, (offset, limit) -> {
            offsets.add(offset);
            int count = offset == 0 ? 9 : offset == 10 ? 10 : offset == 20 ? 1 : 0;
            return new Page(offset, limit, IntStream.range(0, count).mapToObj(i -> asset).toList());
        }).toList();
        assertEquals(20, pages.stream().mapToInt(page -> page.assets().size()).sum());
        assertEquals(List.of(0, 10, 20, 30), offsets);
        assertEquals(2, Pages.stream(1 << 30, (offset, limit) -> new Page(offset, limit, List.of(asset))).count());
    }
}

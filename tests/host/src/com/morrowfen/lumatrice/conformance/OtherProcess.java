package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.lang.management.ManagementFactory;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;

/**
 * A second JVM on the same photo library. Its {@link #main} does one task and answers on standard
 * output, in lines that start with {@link #MARK}.
 */
final class OtherProcess implements AutoCloseable {
    private static final String MARK = "answer: ";

    private final Process process;
    private final BufferedReader output;

    private OtherProcess(Process process) {
        this.process = process;
        output = new BufferedReader(
                new InputStreamReader(process.getInputStream(), StandardCharsets.UTF_8));
    }

    /** Starts it with this JVM's options, and waits until it has opened the library. */
    static OtherProcess start(String... task) throws IOException {
        List<String> command = new ArrayList<>();
        command.add(Path.of(System.getProperty("java.home"), "bin", "java").toString());
        command.addAll(ManagementFactory.getRuntimeMXBean().getInputArguments());
        command.addAll(List.of("-cp", System.getProperty("java.class.path"),
                OtherProcess.class.getName()));
        command.addAll(List.of(task));
        OtherProcess started = new OtherProcess(new ProcessBuilder(command)
                .redirectError(ProcessBuilder.Redirect.INHERIT).start());
        assertEquals("ready", started.answer());
        return started;
    }

    /** The next answer, or null when there is none any more. */
    String answer() throws IOException {
        for (String line = output.readLine(); line != null; line = output.readLine()) {
            if (line.startsWith(MARK)) {
                return line.substring(MARK.length());
            }
            // What the JVM itself has to say, about JNI for instance.
            System.out.println(line);
        }
        return null;
    }

    /** All further answers; expects that the process ends by itself and well. */
    List<String> answers() throws IOException, InterruptedException {
        List<String> all = new ArrayList<>();
        for (String one = answer(); one != null; one = answer()) {
            all.add(one);
        }
        assertTrue(process.waitFor(60, TimeUnit.SECONDS), "still running");
        assertEquals(0, process.exitValue());
        return all;
    }

    /** Ends it where it stands, as the system does, without a chance to tidy up. */
    void kill() throws InterruptedException {
        process.destroyForcibly();
        assertTrue(process.waitFor(60, TimeUnit.SECONDS), "not killed");
    }

    @Override
    public void close() {
        process.destroyForcibly();
    }

    private static void print(String answer) {
        System.out.println(MARK + answer);
        System.out.flush();
    }

    /** The tasks: duplicate ID, delete ID, walk, organise SHARED OWN SEED MILLISECONDS. */
    public static void main(String[] task) {
        PHOTOS.nativeAssetCount();
        print("ready");
        switch (task[0]) {
            case "duplicate" -> print(String.valueOf(PHOTOS.nativeDuplicateCollection(task[1])));
            case "delete" -> print(String.valueOf(PHOTOS.nativeDeleteAlbum(task[1])));
            case "walk" -> print(CollectionTree.below(null).digest());
            case "organise" -> new Organiser(task[1], task[2], Long.parseLong(task[3]))
                    .run(Long.parseLong(task[4])).forEach(OtherProcess::print);
            default -> throw new IllegalArgumentException(task[0]);
        }
    }
}

package com.morrowfen.lumatrice.torture;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Random;
import java.util.concurrent.TimeUnit;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Several hosts of several threads on one photo library, and the owner's tool beside them, each
 * doing whatever is allowed; now and then one is killed and another one started. Afterwards the
 * library must be whole, and every asset still be what its importer was told.
 *
 * <p>Called with the library, an empty folder, seconds, processes, threads and a seed. Ends with 1
 * when a fault was seen.
 */
public final class Torture {
    private static final long SECONDS_TO_END = 120;

    private final Path library;
    private final Path tool;
    private final Path folder;
    private final String threads;
    private final Random random;
    private final List<Process> hosts = new ArrayList<>();
    private int started;
    private int killed;
    private int commands;

    private Torture(String[] arguments) {
        library = Path.of(arguments[0]).toAbsolutePath();
        tool = library.resolveSibling("photos-kit");
        folder = Path.of(arguments[1]).toAbsolutePath();
        threads = arguments[4];
        random = new Random(Long.parseLong(arguments[5]));
    }

    public static void main(String[] arguments) throws Exception {
        Torture torture = new Torture(arguments);
        Pictures.make(torture.folder.resolve("pictures"));
        List<String> faults = torture.run(
                Integer.parseInt(arguments[2]), Integer.parseInt(arguments[3]));
        Facts.All facts = Facts.read(torture.folder);
        faults.addAll(facts.faults);
        faults.addAll(new Aftermath(new PhotosService(torture.library), facts,
                new Pictures(torture.folder.resolve("pictures")), torture.folder).faults());
        System.out.printf("%d hosts of %s threads started, %d of them killed; %d commands%n",
                torture.started, torture.threads, torture.killed, torture.commands);
        System.out.printf("%d imports, %d deletions, and of those that ended: %s%n",
                facts.imported.size(), facts.perhapsDeleted.size(), facts.calls);
        faults.forEach(System.out::println);
        System.exit(faults.isEmpty() ? 0 : 1);
    }

    private List<String> run(int seconds, int processes) throws Exception {
        for (int i = 0; i < processes; ++i) {
            hosts.add(start());
        }
        List<String> faults = new ArrayList<>();
        long end = System.nanoTime() + TimeUnit.SECONDS.toNanos(seconds);
        while (System.nanoTime() < end) {
            command(faults);
            if (random.nextInt(4) == 0) {
                killOne();
            }
            Thread.sleep(random.nextInt(400));
        }
        Files.createFile(folder.resolve("stop"));
        for (Process host : hosts) {
            if (!host.waitFor(SECONDS_TO_END, TimeUnit.SECONDS)) {
                faults.add("FAULT a host hangs: " + host.pid());
                host.destroyForcibly();
            } else if (host.exitValue() != 0) {
                faults.add("FAULT a host died of " + host.exitValue());
            }
        }
        return faults;
    }

    private Process start() throws IOException {
        String name = "host-" + ++started;
        return new ProcessBuilder(
                Path.of(System.getProperty("java.home"), "bin", "java").toString(), "-Xmx128m",
                "-XX:+UseSerialGC", "-XX:ErrorFile=" + folder.resolve(name + ".crash"), "-cp",
                System.getProperty("java.class.path"), Host.class.getName(), library.toString(),
                folder.toString(), name, threads, Integer.toString(random.nextInt(1 << 30)))
                .redirectError(folder.resolve(name + ".diagnostics").toFile())
                .redirectOutput(folder.resolve(name + ".output").toFile()).start();
    }

    private void killOne() throws Exception {
        int which = random.nextInt(hosts.size());
        hosts.get(which).destroyForcibly().waitFor();
        ++killed;
        hosts.set(which, start());
    }

    private void command(List<String> faults) throws Exception {
        List<List<String>> all = List.of(List.of("status"), List.of("albums"),
                List.of("settings", "--json"), List.of("access"),
                List.of("trash", "empty", "--yes", "--all"),
                List.of("import", folder.resolve("pictures").resolve("0.jpg").toString()),
                List.of("export", folder.resolve("tool").toString(), "--album",
                        "00000000-0000-0000-0000-000000000203"),
                with("trash restore", identifiers("trash", "list", "--json")),
                with("revert", identifiers("list", "--json")));
        run(all.get(random.nextInt(all.size())), random.nextInt(5) == 0, faults);
    }

    private static List<String> with(String words, List<String> identifiers) {
        List<String> command = new ArrayList<>(List.of(words.split(" ")));
        command.addAll(identifiers.isEmpty() ? List.of("none") : identifiers);
        return command;
    }

    /** Three of those that a command of the tool lists. */
    private List<String> identifiers(String... words) throws Exception {
        Path output = folder.resolve("identifiers");
        List<String> command = new ArrayList<>(List.of(tool.toString()));
        command.addAll(List.of(words));
        new ProcessBuilder(command).redirectOutput(output.toFile())
                .redirectError(ProcessBuilder.Redirect.DISCARD).start().waitFor();
        List<String> found = new ArrayList<>();
        Matcher matcher = Pattern.compile("[0-9A-F-]{36}/L0/001").matcher(Files.readString(output));
        while (matcher.find()) {
            found.add(matcher.group());
        }
        Collections.shuffle(found, random);
        return found.subList(0, Math.min(3, found.size()));
    }

    private void run(List<String> words, boolean kill, List<String> faults) throws Exception {
        List<String> command = new ArrayList<>(List.of(tool.toString()));
        command.addAll(words);
        Process process = new ProcessBuilder(command).redirectErrorStream(true)
                .redirectOutput(folder.resolve("tool.output").toFile()).start();
        process.getOutputStream().close();
        if (kill) {
            Thread.sleep(random.nextInt(20));
            process.destroyForcibly().waitFor();
        } else if (!process.waitFor(SECONDS_TO_END, TimeUnit.SECONDS)) {
            process.destroyForcibly();
            faults.add("FAULT the tool hangs: " + words);
        } else if (process.exitValue() > 1) {
            faults.add("FAULT the tool ended with " + process.exitValue() + ": " + words);
        }
        ++commands;
    }
}

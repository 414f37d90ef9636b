package com.morrowfen.lumatrice.tour;

import java.io.IOException;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;

/** The command line tool beside the library: a host cannot empty or open the trash, its user can. */
final class RestoringTool {
    private final Path program;

    RestoringTool(Path library) {
        program = library.toAbsolutePath().resolveSibling("photos-kit");
    }

    boolean restore(String assetId) throws IOException, InterruptedException {
        Process process = new ProcessBuilder(program.toString(), "trash", "restore", assetId)
                .redirectOutput(ProcessBuilder.Redirect.DISCARD)
                .redirectError(ProcessBuilder.Redirect.INHERIT)
                .start();
        return process.waitFor(60, TimeUnit.SECONDS) && process.exitValue() == 0;
    }
}

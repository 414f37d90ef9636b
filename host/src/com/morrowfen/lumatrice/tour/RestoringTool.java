package com.morrowfen.lumatrice.tour;

import java.io.IOException;
import java.util.concurrent.TimeUnit;

/** The command line tool on the path: a host cannot empty or open the trash, its user can. */
final class RestoringTool {
    private RestoringTool() {}

    static boolean restore(String assetId) throws IOException, InterruptedException {
        Process process = new ProcessBuilder("photos-kit", "trash", "restore", assetId)
                .redirectOutput(ProcessBuilder.Redirect.DISCARD)
                .redirectError(ProcessBuilder.Redirect.INHERIT)
                .start();
        return process.waitFor(60, TimeUnit.SECONDS) && process.exitValue() == 0;
    }
}

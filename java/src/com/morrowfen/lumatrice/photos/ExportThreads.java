package com.morrowfen.lumatrice.photos;

import java.util.concurrent.Executor;

/**
 * What exports run on unless the host chooses: platform threads, as {@link
 * PhotoLibrary#withExportsOn} explains.
 */
final class ExportThreads implements Executor {
    @Override
    public void execute(Runnable task) {
        Thread thread = new Thread(task, "photos-kit-export");
        thread.setDaemon(true);
        thread.start();
    }
}

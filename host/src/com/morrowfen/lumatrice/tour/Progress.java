package com.morrowfen.lumatrice.tour;

/** Shows how far a job is: a bar on a terminal, a line for every tenth of it elsewhere. */
abstract class Progress {
    private final String action;
    private final int total;
    private int done;

    private Progress(String action, int total) {
        this.action = action;
        this.total = total;
    }

    static Progress of(String action, int total) {
        return System.console() == null ? new Lines(action, total) : new Bar(action, total);
    }

    /** One more is done. From any thread. */
    synchronized void step(String name) {
        ++done;
        show(action, done, total, name);
    }

    synchronized void end() {}

    protected abstract void show(String action, int done, int total, String name);

    private static final class Lines extends Progress {
        Lines(String action, int total) {
            super(action, total);
        }

        @Override
        protected void show(String action, int done, int total, String name) {
            if (done * 10L / total > (done - 1) * 10L / total) {
                System.out.printf("%s: %,d of %,d%n", action, done, total);
            }
        }
    }

    private static final class Bar extends Progress {
        private static final int BAR_WIDTH = 24;
        private static final int NAME_WIDTH = 24;

        Bar(String action, int total) {
            super(action, total);
        }

        @Override
        protected void show(String action, int done, int total, String name) {
            int filled = (int) ((long) BAR_WIDTH * done / total);
            String bar = "█".repeat(filled) + "░".repeat(BAR_WIDTH - filled);
            String shown = Printable.line(name);
            shown = shown.length() > NAME_WIDTH ? shown.substring(0, NAME_WIDTH) : shown;
            System.out.printf("\r%s %s %,d/%,d %-" + NAME_WIDTH + "s", action, bar, done, total,
                    shown);
        }

        @Override
        synchronized void end() {
            System.out.print("\r\033[K");
            System.out.flush();
        }
    }
}

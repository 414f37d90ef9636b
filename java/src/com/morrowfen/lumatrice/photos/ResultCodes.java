package com.morrowfen.lumatrice.photos;

/** What the result codes of the native methods mean, a sentence each. */
final class ResultCodes {
    private static final String CHANGE_FAILED =
            "The photo library could not carry out the change; the diagnostic log says why.";

    private ResultCodes() {}

    /** Gives back a result that is a success; for any other there is an exception. */
    static int successful(String method, int result) {
        if (result < 0) {
            throw new PhotosException(method, result, meaning(method, result));
        }
        return result;
    }

    /** Gives back the identifier of something that was made, if it was made. */
    static String made(String method, String idOrNull) {
        if (idOrNull == null) {
            throw new PhotosException(method, null, meaning(method, 0));
        }
        return idOrNull;
    }

    private static String meaning(String method, int code) {
        String meaning = code == -1 ? notStarted(method) : failed(method, code);
        return meaning != null ? meaning : "This code is not one that the method should give.";
    }

    private static String notStarted(String method) {
        return switch (method) {
            case "nativeAlbumContainsAsset" -> "No album has this identifier.";
            case "nativeExportToFile", "nativeContentEditingImage", "nativeApplyEdit" ->
                "No asset has this identifier, or access to it is denied.";
            case "nativeDeleteAssets", "nativeSetFavorite", "nativeSetHidden" ->
                "No asset has any of these identifiers, or access to them is denied.";
            case "nativeCopyAssetAttributes" ->
                "The source or the target is unknown, or access to it is denied.";
            case "nativeAddAssetsToAlbum", "nativeRemoveAssetsFromAlbum" ->
                "The album is unknown, or all of the assets are, or access is denied.";
            case "nativeRenameAlbum", "nativeDeleteAlbum" ->
                "No album or folder has this identifier, or access is denied.";
            default -> null;
        };
    }

    private static String failed(String method, int code) {
        return switch (method + code) {
            case "nativeExportToFile-2" -> "The asset has no file that can be exported.";
            case "nativeExportToFile-3" -> "The destination could not be opened or written, or the"
                    + " transfer failed; the diagnostic log says which, if it was the transfer.";
            case "nativeExportToFile-4" -> "The export was cancelled.";
            case "nativeContentEditingImage-2", "nativeApplyEdit-2" ->
                "The asset cannot be edited; a video cannot.";
            case "nativeContentEditingImage-3" ->
                "The picture could not be copied to its destination; is its folder there?";
            case "nativeApplyEdit-3" ->
                "The rendered file could not be read, or the library could not take it over.";
            case "nativeDeleteAssets-2" -> "The user refused to delete the assets.";
            case "nativeAddAssetsToAlbum-2", "nativeRemoveAssetsFromAlbum-2",
                "nativeRenameAlbum-2", "nativeDeleteAlbum-2" ->
                "It is a smart album, which cannot be changed, or the change failed; the"
                    + " diagnostic log has a line if it failed.";
            case "nativeApplyEdit-4", "nativeDeleteAssets-3", "nativeSetFavorite-2",
                "nativeSetHidden-2" -> CHANGE_FAILED;
            case "nativeCreateAlbum0", "nativeCreateFolder0" ->
                "There is no such folder to put it into, or the change failed; if it could not be"
                    + " put into the folder, it stands at the top level now.";
            case "nativeDuplicateCollection0" ->
                "The collection is unknown or a smart album, or the copy could not be made.";
            default -> null;
        };
    }
}

/*
 * Copyright (C) 2024 Tavix
 *
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *      http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

package vendor.tavix.tps;

import vendor.tavix.tps.ITpsCallback;

/**
 * Picture-quality service of the display pipeline. Every method is synchronous; only
 * registerCallback reports an error (EX_UNSUPPORTED_OPERATION for a null callback).
 */
@VintfStability
interface ITps {
    /**
     * Seven values: backlight brightness (0..255), reserved 0, picture mode, display index,
     * ambient lux, display width, display height.
     */
    float[] getTavixPrismStatus();

    /** Adds a client that is told when rendering and the logo start and stop. */
    void registerCallback(in ITpsCallback callback);

    /** Opens a sensor session; filtered selects smoothed lux and brightness. */
    void registerProcessor(in boolean filtered);

    /** Closes a sensor session. */
    void unregisterProcessor();

    /** Sets one numeric parameter, identified by id. */
    void updateParams(in long id, in long value);

    void updateDisplayIDs(in int[] displayIds);

    int[] getDisplayIDs();

    /** Text parameters written as key=value;key=value. */
    void setParameters(in String params);

    /** Answers the requested keys as key=value;key=value. */
    String getParameters(in String keys);
}

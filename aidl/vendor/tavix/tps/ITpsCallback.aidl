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

/**
 * Implemented by clients of ITps and handed over with ITps.registerCallback.
 */
@VintfStability
interface ITpsCallback {
    boolean onTavixPrismPlaybackStart();

    boolean onTavixPrismPlaybackStop();

    /**
     * One of "Callback_TavixRenderStart", "Callback_TavixRenderStop", "Callback_TavixLogoStart"
     * or "Callback_TavixLogoStop".
     */
    void onTavixNotification(in String event);
}

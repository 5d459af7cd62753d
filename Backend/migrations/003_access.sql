-- Who may do what: the least that the twelve requests need. Backend/Security.md explains it.

-- Not exposed: what stands in front offers only the functions of the schema public.
CREATE SCHEMA fernhollow;
GRANT USAGE ON SCHEMA fernhollow TO anon;

-- Whether the request is a POST to a table, which only upserts. A POST to a function is none: some hosted
-- projects bring a function that runs whatever query it is sent, with the rights of whoever sent it.
CREATE FUNCTION fernhollow.is_upsert() RETURNS boolean
    LANGUAGE sql
    STABLE
AS $$
    SELECT current_setting('request.method', true) = 'POST'
        AND current_setting('request.path', true) NOT LIKE '%/rpc/%'
$$;

CREATE FUNCTION fernhollow.refuse_second_row() RETURNS boolean
    LANGUAGE plpgsql
    VOLATILE
    SET search_path = pg_catalog, pg_temp
AS $$
BEGIN
    RAISE insufficient_privilege USING
        MESSAGE = 'a request reads one row',
        HINT = 'Filter by customer_email, device_id and day.';
END
$$;

-- The one select asks for a single row. A request that would look at a second one is somebody listing what
-- is not his, and ends here. Asked only of the rows that a request's own equality filters leave over,
-- because equality tells nobody what it compares. Plain SQL without settings of its own, so that it becomes
-- part of the statement, as the one above; called, it would cost more than the select.
CREATE FUNCTION fernhollow.only_row_of_request() RETURNS boolean
    LANGUAGE sql
    VOLATILE
AS $$
    SELECT CASE
        WHEN coalesce(current_setting('request.method', true), '') NOT IN ('GET', 'HEAD') THEN false
        WHEN current_setting('fernhollow.row_was_read', true) = 'yes' THEN fernhollow.refuse_second_row()
        ELSE set_config('fernhollow.row_was_read', 'yes', true) = 'yes'
    END
$$;
REVOKE ALL ON FUNCTION fernhollow.is_upsert(), fernhollow.refuse_second_row(), fernhollow.only_row_of_request()
    FROM PUBLIC;
GRANT EXECUTE ON FUNCTION fernhollow.is_upsert(), fernhollow.refuse_second_row(), fernhollow.only_row_of_request()
    TO anon;

-- Rights of tables are all or nothing for their rows, and some (TRUNCATE) ask no policy: none but these.
REVOKE ALL ON public.device_day_counts, public.device_hour_counts, public.device_app_hour_counts,
    public.device_app_registry, public.devices FROM PUBLIC, anon;
DO $$
BEGIN
    IF to_regrole('authenticated') IS NOT NULL THEN
        REVOKE ALL ON public.device_day_counts, public.device_hour_counts, public.device_app_hour_counts,
            public.device_app_registry, public.devices FROM authenticated;
    END IF;
END
$$;

ALTER TABLE public.device_day_counts ENABLE ROW LEVEL SECURITY;
ALTER TABLE public.device_hour_counts ENABLE ROW LEVEL SECURITY;
ALTER TABLE public.device_app_hour_counts ENABLE ROW LEVEL SECURITY;
ALTER TABLE public.device_app_registry ENABLE ROW LEVEL SECURITY;
ALTER TABLE public.devices ENABLE ROW LEVEL SECURITY;

-- An upsert inserts, sets every column that it was sent (its keys too, to what they were), and needs the
-- right to read each of them for that. Which rows can be read at all is up to the policies below.
GRANT INSERT (count, updated_at, day, customer_email, device_id),
    UPDATE (count, updated_at, day, customer_email, device_id),
    SELECT (count, updated_at, day, customer_email, device_id) ON public.device_day_counts TO anon;
GRANT INSERT (count, updated_at, day, hour, customer_email, device_id),
    UPDATE (count, updated_at, day, hour, customer_email, device_id),
    SELECT (count, updated_at, day, hour, customer_email, device_id) ON public.device_hour_counts TO anon;
GRANT INSERT (count, updated_at, day, hour, customer_email, device_id, bundle_id),
    UPDATE (count, updated_at, day, hour, customer_email, device_id, bundle_id),
    SELECT (count, updated_at, day, hour, customer_email, device_id, bundle_id) ON public.device_app_hour_counts TO anon;
GRANT INSERT (updated_at, is_hidden, customer_email, bundle_id, app_name),
    UPDATE (updated_at, is_hidden, customer_email, bundle_id, app_name),
    SELECT (updated_at, is_hidden, customer_email, bundle_id, app_name) ON public.device_app_registry TO anon;
GRANT INSERT (last_seen_at, customer_email, device_id, device_name),
    UPDATE (last_seen_at, customer_email, device_id, device_name),
    SELECT (last_seen_at, customer_email, device_id, device_name) ON public.devices TO anon;

-- Without the condition a PATCH could rewrite every row of every account, and a GET could list them all.
CREATE POLICY upsert_inserts ON public.device_day_counts FOR INSERT TO anon
    WITH CHECK (fernhollow.is_upsert());
CREATE POLICY upsert_inserts ON public.device_hour_counts FOR INSERT TO anon
    WITH CHECK (fernhollow.is_upsert());
CREATE POLICY upsert_inserts ON public.device_app_hour_counts FOR INSERT TO anon
    WITH CHECK (fernhollow.is_upsert());
CREATE POLICY upsert_inserts ON public.device_app_registry FOR INSERT TO anon
    WITH CHECK (fernhollow.is_upsert());
CREATE POLICY upsert_inserts ON public.devices FOR INSERT TO anon
    WITH CHECK (fernhollow.is_upsert());

CREATE POLICY upsert_updates ON public.device_day_counts FOR UPDATE TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_updates ON public.device_hour_counts FOR UPDATE TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_updates ON public.device_app_hour_counts FOR UPDATE TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_updates ON public.device_app_registry FOR UPDATE TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_updates ON public.devices FOR UPDATE TO anon
    USING (fernhollow.is_upsert());

CREATE POLICY upsert_or_select_sees ON public.device_day_counts FOR SELECT TO anon
    USING (fernhollow.is_upsert() OR fernhollow.only_row_of_request());
CREATE POLICY upsert_sees ON public.device_hour_counts FOR SELECT TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_sees ON public.device_app_hour_counts FOR SELECT TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_sees ON public.device_app_registry FOR SELECT TO anon
    USING (fernhollow.is_upsert());
CREATE POLICY upsert_sees ON public.devices FOR SELECT TO anon
    USING (fernhollow.is_upsert());

-- The functions read for everybody, each for the account that it is asked about.
GRANT SELECT ON public.device_day_counts, public.device_hour_counts, public.device_app_hour_counts,
    public.device_app_registry, public.devices TO fernhollow_reader;
CREATE POLICY functions_read ON public.device_day_counts FOR SELECT TO fernhollow_reader USING (true);
CREATE POLICY functions_read ON public.device_hour_counts FOR SELECT TO fernhollow_reader USING (true);
CREATE POLICY functions_read ON public.device_app_hour_counts FOR SELECT TO fernhollow_reader USING (true);
CREATE POLICY functions_read ON public.device_app_registry FOR SELECT TO fernhollow_reader USING (true);
CREATE POLICY functions_read ON public.devices FOR SELECT TO fernhollow_reader USING (true);
